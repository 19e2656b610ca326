// A plain text edit to select text in: qt_editor TITLE TEXT [read-only]

#include <QApplication>
#include <QPlainTextEdit>

int main(int argc, char **argv) {
  const QApplication app(argc, argv);
  const QStringList arguments = QApplication::arguments();
  QPlainTextEdit editor;
  editor.setWindowTitle(arguments.value(1));
  editor.setPlainText(arguments.value(2));
  if (arguments.value(3) == QLatin1String("read-only")) {
    editor.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  }
  editor.resize(420, 260);
  editor.show();
  return QApplication::exec();
}
