#include "popup/ConversationRows.h"

#include "ui/Fonts.h"
#include "ui/Palette.h"
#include "ui/ProgressIndicator.h"
#include "ui/Symbols.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QPainter>

#include <algorithm>

namespace lumiwren {
namespace {

constexpr int rowFontSize = 13;

constexpr int bubbleHorizontalPadding = 12;
constexpr int bubbleVerticalPadding = 8;
constexpr int bubbleRadius = 8;

constexpr int errorSymbolSize = 16;
constexpr int errorSpacing = 8;

constexpr int indicatorSize = 16;  // scaled to 0.8 when drawn
constexpr int loadingPadding = 40;
constexpr int loadingSpacing = 8;

}  // namespace

UserBubble::UserBubble(QWidget *parent) : QWidget(parent), text_(new PlainTextView(rowFontSize, this)) {
  text_->setAccessibleName(QStringLiteral("Question"));
}

bool UserBubble::setText(const QString &text) {
  const bool changed = text_->setText(text);
  if (changed) {
    update();
  }
  return changed;
}

int UserBubble::heightForWidth(int width) const {
  const int bubbleWidth = std::min(width, text_->idealWidth() + 2 * bubbleHorizontalPadding);
  const int textHeight = text_->layOut(bubbleWidth - 2 * bubbleHorizontalPadding);
  text_->setGeometry(width - bubbleWidth + bubbleHorizontalPadding, bubbleVerticalPadding,
                     bubbleWidth - 2 * bubbleHorizontalPadding, textHeight);
  return textHeight + 2 * bubbleVerticalPadding;
}

void UserBubble::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(lumiwrenPurple(0.2));
  painter.drawRoundedRect(text_->geometry().adjusted(-bubbleHorizontalPadding, -bubbleVerticalPadding,
                                                     bubbleHorizontalPadding, bubbleVerticalPadding),
                          bubbleRadius, bubbleRadius);
}

ErrorRow::ErrorRow(QWidget *parent) : QWidget(parent), text_(new PlainTextView(rowFontSize, this)) {
  text_->setAccessibleName(QStringLiteral("Error"));
}

void ErrorRow::setText(const QString &text) {
  text_->setText(text);
}

void ErrorRow::setVerticalPadding(int top, int bottom) {
  top_ = top;
  bottom_ = bottom;
}

int ErrorRow::heightForWidth(int width) const {
  const int symbolSize = scaledSize(errorSymbolSize);
  const int left = symbolSize + errorSpacing;
  const int height = std::max(text_->layOut(width - left), symbolSize);
  text_->setGeometry(left, top_, width - left, height);
  return top_ + height + bottom_;
}

void ErrorRow::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  const int symbolSize = scaledSize(errorSymbolSize);
  // In the middle of the text's first line.
  const double middle = top_ + std::max(symbolSize, text_->characterRect(0).height()) / 2.0;
  drawSymbol(painter, QStringLiteral("exclamationmark.triangle.fill"), QPointF(symbolSize / 2.0, middle),
             symbolSize, SemanticColors(palette()).orange);
}

LoadingRow::LoadingRow(QWidget *parent) : QWidget(parent), label_(new QLabel(this)) {
  label_->setTextFormat(Qt::PlainText);
  label_->setText(QStringLiteral("Getting explanation..."));
  label_->setFont(systemFont(rowFontSize));
  auto *const layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, loadingPadding, 0, loadingPadding);
  layout->setSpacing(loadingSpacing);
  layout->addStretch();
  layout->addWidget(new ProgressIndicator(indicatorSize, this));
  layout->addWidget(label_);
  layout->addStretch();
  tint();
}

void LoadingRow::changeEvent(QEvent *event) {
  if (event->type() == QEvent::PaletteChange) {
    tint();
  } else if (event->type() == QEvent::FontChange) {
    label_->setFont(systemFont(rowFontSize));
  }
  QWidget::changeEvent(event);
}

void LoadingRow::tint() {
  auto tinted = label_->palette();
  tinted.setColor(QPalette::WindowText, SemanticColors(palette()).secondary);
  label_->setPalette(tinted);
}

}  // namespace lumiwren
