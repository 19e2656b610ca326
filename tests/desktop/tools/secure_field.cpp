// A field for a secret, and a button that shows it.

#include "ui/PushButton.h"
#include "ui/SecureField.h"

#include <QApplication>
#include <QVBoxLayout>

int main(int argc, char **argv) {
  const QApplication app(argc, argv);
  QWidget window;
  window.setWindowTitle(QStringLiteral("Secure field"));
  auto *const field = new lumiwren::SecureField(QStringLiteral("Secret"));
  auto *const show = new lumiwren::PushButton(lumiwren::PushButton::Kind::Bordered, QStringLiteral("Show"));
  auto *const layout = new QVBoxLayout(&window);
  layout->addWidget(field);
  layout->addWidget(show);
  QObject::connect(show, &QPushButton::clicked, field, [field] {
    field->setMasked(false);
    field->setFocus();
  });
  window.show();
  return QApplication::exec();
}
