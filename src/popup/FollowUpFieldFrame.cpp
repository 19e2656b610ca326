#include "popup/FollowUpFieldFrame.h"

#include "popup/ActivatingTextField.h"
#include "ui/Palette.h"

#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>

namespace lumiwren {
namespace {

constexpr int horizontalPadding = 10;
constexpr int verticalPadding = 8;
constexpr qreal cornerRadius = 6;
constexpr int fieldMargin = 2;  // the toolkit's own, on either side of a field's text

}  // namespace

FollowUpFieldFrame::FollowUpFieldFrame(ActivatingTextField *field, QWidget *parent)
    : QWidget(parent), field_(field) {
  auto *const layout = new QHBoxLayout(this);
  layout->setContentsMargins(horizontalPadding - fieldMargin, verticalPadding,
                             horizontalPadding - fieldMargin, verticalPadding);
  layout->addWidget(field_);
  setCursor(Qt::IBeamCursor);
}

void FollowUpFieldFrame::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(withOpacity(SemanticColors(palette()).primary, 0.1), 1));
  // The same as the field has inside, enabled or not.
  painter.setBrush(
      field_->palette().color(field_->isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::Base));
  painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
}

void FollowUpFieldFrame::mousePressEvent(QMouseEvent *event) {
  if (event->button() == Qt::LeftButton && field_->isEnabled()) {
    field_->activate();
    field_->setFocus(Qt::MouseFocusReason);
  }
}

}  // namespace lumiwren
