// pasteboard_program HOLDER: a program whose end is tested. It obeys the lines of its input until that ends:
//   capture  takes the pasteboard's contents and puts them back; prints "restored"
//   read     takes the contents; prints "read"
//   picture  puts a text and a large picture; prints "put"

#include "platform/linux/x11/X11Pasteboard.h"
#include "support/SelectionPattern.h"

#include <iostream>
#include <string>

int main(int, char **argv) {
  using namespace lumiwren;
  X11Pasteboard pasteboard(argv[1]);
  for (std::string line; std::getline(std::cin, line);) {
    if (line == "capture") {
      pasteboard.setContents(pasteboard.contents({}), PasteboardLifetime::Lasting);
      std::cout << "restored" << std::endl;
    } else if (line == "read") {
      (void)pasteboard.contents({});
      std::cout << "read" << std::endl;
    } else if (line == "picture") {
      pasteboard.setContents({{"UTF8_STRING", {'t', 'e', 'x', 't'}},
                              {"image/png", testing::patternBytes(testing::pictureBytes)}},
                             PasteboardLifetime::Lasting);
      std::cout << "put" << std::endl;
    }
  }
}
