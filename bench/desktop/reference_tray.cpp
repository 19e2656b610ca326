// The least that a Qt program with a status item can be: what starting is measured against.

#include <QApplication>
#include <QMenu>
#include <QSystemTrayIcon>

int main(int argc, char **argv) {
  QApplication app(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  QPixmap pixmap(22, 22);
  pixmap.fill(Qt::darkGray);
  QMenu menu;
  QObject::connect(menu.addAction(QStringLiteral("Quit")), &QAction::triggered, &app, &QApplication::quit);
  QSystemTrayIcon icon{QIcon(pixmap)};
  icon.setContextMenu(&menu);
  icon.show();
  return QApplication::exec();
}
