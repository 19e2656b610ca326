// lumiwren-pasteboard keeps what the program has put back on the clipboard when the program has ended.

#include "platform/linux/x11/selection/PasteboardHolder.h"

#include <malloc.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

int main() {
  // Where the program leaves the socket through which the contents come.
  constexpr int socketNumber = 3;
  int type = 0;
  socklen_t size = sizeof type;
  if (getsockopt(socketNumber, SOL_SOCKET, SO_TYPE, &type, &size) != 0 || type != SOCK_SEQPACKET) {
    std::fputs("lumiwren-pasteboard is started by lumiwren\n", stderr);
    return EXIT_FAILURE;
  }
  // What is on the clipboard must not get into a core file.
  prctl(PR_SET_DUMPABLE, 0);
  if (chdir("/") != 0) {
    return EXIT_FAILURE;
  }
  // A picture's memory goes back to the system with the picture; the threshold is otherwise raised by it.
  mallopt(M_MMAP_THRESHOLD, 128 * 1024);
  switch (fork()) {
    case -1:
      return EXIT_FAILURE;
    case 0:
      lumiwren::runPasteboardHolder(lumiwren::FileDescriptor(socketNumber),
                                    lumiwren::HolderEnds::WithTheOwnership);
      return EXIT_SUCCESS;
    default:
      _exit(EXIT_SUCCESS);
  }
}
