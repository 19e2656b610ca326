#include "net/ServerProcess.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

namespace lumiwren::bench {

ServerProcess::ServerProcess(const testing::HTTPTestServer::Handler &handler, ssl_ctx_st *tls) {
  std::array<int, 2> pipe{};
  if (::pipe(pipe.data()) != 0 || (process_ = fork()) < 0) {
    throw std::runtime_error("cannot start the server process");
  }
  if (process_ == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const testing::HTTPTestServer server(handler, tls);
    const auto origin = server.url("\n");
    if (::write(pipe[1], origin.data(), origin.size()) > 0) {
      for (;;) {
        pause();
      }
    }
    _exit(1);
  }
  ::close(pipe[1]);
  for (char byte = 0; ::read(pipe[0], &byte, 1) == 1 && byte != '\n';) {
    origin_ += byte;
  }
  ::close(pipe[0]);
}

ServerProcess::~ServerProcess() {
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
}

}  // namespace lumiwren::bench
