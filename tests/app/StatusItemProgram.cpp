// A program that is nothing but its status item. It prints "activated X Y" when the item is chosen,
// "about to show the menu", and "quit" when that is chosen in its menu; then it ends.

#include "app/StatusItem.h"

#include <QApplication>
#include <QDBusConnection>

#include <cstdio>

int main(int argc, char **argv) {
  const QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  lumiwren::StatusItem item(
      QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("item")),
      [](QPoint position) {
        std::printf("activated %d %d\n", position.x(), position.y());
        std::fflush(stdout);
      },
      [] {
        std::puts("about to show the menu");
        std::fflush(stdout);
      });
  item.setEntries({{.id = 1, .label = QStringLiteral("Quit"), .action = [] {
                      std::puts("quit");
                      QApplication::quit();
                    }}});
  return QApplication::exec();
}
