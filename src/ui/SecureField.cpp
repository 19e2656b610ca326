#include "ui/SecureField.h"

#include "ui/SecureFieldAccessible.h"

#include <QByteArray>
#include <QKeyEvent>
#include <QSignalBlocker>
#include <QVariant>

#include <cstring>

namespace lumiwren {
namespace {

/// Overwrites a text that nobody else holds any more.
void wipe(QString &text) {
  explicit_bzero(text.data(), static_cast<std::size_t>(text.size()) * sizeof(QChar));
}

}  // namespace

SecureField::SecureField(const QString &name, QWidget *parent) : TextField(name, Face::Monospaced, parent) {
  SecureFieldAccessible::install();
  setMasked(true);
}

SecureField::~SecureField() {
  const QSignalBlocker silent(this);
  setSecret({});
}

void SecureField::setMasked(bool masked) {
  setEchoMode(masked ? QLineEdit::Password : QLineEdit::Normal);
  setAttribute(Qt::WA_InputMethodEnabled, !masked);
}

Secret SecureField::secret() const {
  QByteArray bytes = text().toUtf8();
  Secret secret = Secret::copyOf({bytes.constData(), static_cast<std::size_t>(bytes.size())});
  explicit_bzero(bytes.data(), static_cast<std::size_t>(bytes.size()));
  return secret;
}

void SecureField::setSecret(const Secret &secret) {
  const auto bytes = secret.reveal();
  const QString decoded = QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
  if (QString old = text(); old != decoded) {
    setText(decoded);
    wipe(old);
  }
}

QVariant SecureField::inputMethodQuery(Qt::InputMethodQuery query) const {
  // The toolkit would answer with the text, masked or not.
  const bool isText = query == Qt::ImSurroundingText || query == Qt::ImCurrentSelection ||
                      query == Qt::ImTextBeforeCursor || query == Qt::ImTextAfterCursor;
  return isMasked() && isText ? QVariant(QString()) : TextField::inputMethodQuery(query);
}

void SecureField::keyPressEvent(QKeyEvent *event) {
  // The toolkit's field would delete what it does not put on the clipboard.
  if (isMasked() && event->matches(QKeySequence::Cut)) {
    return;
  }
  TextField::keyPressEvent(event);
}

}  // namespace lumiwren
