#pragma once

#include "ui/TextLabel.h"

#include <QMargins>

namespace lumiwren {

/// A text on a small ground of its own: a badge, or keys.
class BoxedLabel : public TextLabel {
  Q_OBJECT

public:
  /// `padding` is in points, around the text.
  BoxedLabel(const QString &text, TextStyle style, QMargins padding,
             SemanticColor color = &SemanticColors::primary, QWidget *parent = nullptr);

  /// Something is about to become the text.
  void setActive(bool active);

protected:
  void paintEvent(QPaintEvent *event) override;

private:
  bool isActive_ = false;
};

}  // namespace lumiwren
