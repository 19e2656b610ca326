#include "popup/FollowUpFieldFrame.h"

#include "popup/ActivatingTextField.h"
#include "ui/Palette.h"
#include "ui/PixelGrid.h"

#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>

namespace lumiwren {
namespace {

constexpr int frameHorizontalPadding = 10;
constexpr int verticalPadding = 8;
constexpr qreal frameCornerRadius = 6;
constexpr int fieldMargin = 2;  // the toolkit's own, on either side of a field's text

}  // namespace

FollowUpFieldFrame::FollowUpFieldFrame(ActivatingTextField *field, QWidget *parent)
    : QWidget(parent), field_(field) {
  auto *const layout = new QHBoxLayout(this);
  layout->setContentsMargins(frameHorizontalPadding - fieldMargin, verticalPadding,
                             frameHorizontalPadding - fieldMargin, verticalPadding);
  layout->addWidget(field_);
  setCursor(Qt::IBeamCursor);
}

void FollowUpFieldFrame::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(SemanticColors(palette()).textBackground);
  painter.drawRoundedRect(rectOnPixels(painter, rect()), frameCornerRadius, frameCornerRadius);
}

void FollowUpFieldFrame::mousePressEvent(QMouseEvent *event) {
  if (event->button() == Qt::LeftButton && field_->isEnabled()) {
    field_->activate();
    field_->setFocus(Qt::MouseFocusReason);
  } else {
    event->ignore();
  }
}

}  // namespace lumiwren
