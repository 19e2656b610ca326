// A program that is nothing but its status item. It prints "quit" when that is chosen, then ends. With the
// argument "activation" it prints "activated X Y" where otherwise the menu would be shown.

#include "app/StatusItem.h"

#include <QApplication>

#include <cstdio>
#include <functional>
#include <string_view>

int main(int argc, char **argv) {
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  std::function<void(QPoint)> onActivate;
  if (argc > 1 && std::string_view(argv[1]) == "activation") {
    onActivate = [](QPoint position) {
      std::printf("activated %d %d\n", position.x(), position.y());
      std::fflush(stdout);
    };
  }
  const lumiwren::StatusItem item(
      [] {
        std::puts("quit");
        QApplication::quit();
      },
      onActivate);
  return QApplication::exec();
}
