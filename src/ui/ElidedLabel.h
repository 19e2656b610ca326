#pragma once

#include "ui/TextLabel.h"

namespace lumiwren {

/// A text on one line that ends in an ellipsis where it does not fit; then it is shown in full while the
/// pointer rests on it. Assistive technology always has it in full.
class ElidedLabel : public TextLabel {
  Q_OBJECT

public:
  using TextLabel::TextLabel;

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

protected:
  bool event(QEvent *event) override;
  void paintEvent(QPaintEvent *event) override;

private:
  QString line() const;
};

}  // namespace lumiwren
