#pragma once

#include "base/Secret.h"
#include "ui/TextField.h"

namespace lumiwren {

/// A field for a secret. While it is masked its text is neither drawn nor given to assistive technology, the
/// clipboard, a drag or an input method.
class SecureField : public TextField {
  Q_OBJECT

public:
  explicit SecureField(const QString &name, QWidget *parent = nullptr);
  ~SecureField() override;

  bool isMasked() const { return echoMode() != QLineEdit::Normal; }
  void setMasked(bool masked);

  Secret secret() const;
  void setSecret(const Secret &secret);

  QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

protected:
  void keyPressEvent(QKeyEvent *event) override;
};

}  // namespace lumiwren
