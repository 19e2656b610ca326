#include "popup/SourceTextLabel.h"

#include "ui/Fonts.h"
#include "ui/Palette.h"

#include <QEvent>
#include <QPainter>
#include <QTextLayout>
#include <QTextOption>

#include <algorithm>

namespace lumiwren {
namespace {

constexpr int sourceFontSize = 12;
constexpr int maximumLines = 2;

/// Breaks the text into lines of a width; at least one, also of an empty text.
void layOut(QTextLayout &layout, int width) {
  QTextOption option;
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  layout.setTextOption(option);
  layout.beginLayout();
  for (auto line = layout.createLine(); line.isValid(); line = layout.createLine()) {
    line.setLineWidth(width);
  }
  layout.endLayout();
}

QString displayed(QString text) {
  return text.replace(QLatin1Char('\n'), QChar::LineSeparator);
}

}  // namespace

SourceTextLabel::SourceTextLabel(QWidget *parent) : QLabel(parent) {
  setTextFormat(Qt::PlainText);
  setFont(systemFont(sourceFontSize, QFont::Medium));
  QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
}

int SourceTextLabel::heightForWidth(int width) const {
  QTextLayout layout(displayed(text()), font());
  layOut(layout, width);
  return std::clamp(layout.lineCount(), 1, maximumLines) * fontMetrics().lineSpacing();
}

QSize SourceTextLabel::sizeHint() const {
  return {fontMetrics().horizontalAdvance(text()), fontMetrics().lineSpacing()};
}

QSize SourceTextLabel::minimumSizeHint() const {
  return {0, fontMetrics().lineSpacing()};
}

void SourceTextLabel::changeEvent(QEvent *event) {
  if (event->type() == QEvent::FontChange) {
    setFont(systemFont(sourceFontSize, QFont::Medium));
  }
  QLabel::changeEvent(event);
}

void SourceTextLabel::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  painter.setPen(SemanticColors(palette()).secondary);
  QTextLayout layout(displayed(text()), font());
  layOut(layout, width());
  // Each line is drawn as the whole text runs, also one that has words of another script alone.
  painter.setLayoutDirection(layout.text().isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
  const int lineHeight = fontMetrics().lineSpacing();
  const int lineCount = std::clamp(layout.lineCount(), 1, maximumLines);
  const int top = (height() - lineCount * lineHeight) / 2;
  for (int index = 0; index < std::min(layout.lineCount(), maximumLines); ++index) {
    const auto line = layout.lineAt(index);
    QString shown = layout.text().mid(line.textStart(), line.textLength());
    if (index + 1 == maximumLines && layout.lineCount() > maximumLines) {
      const QString rest =
          layout.text().mid(line.textStart()).replace(QChar::LineSeparator, QLatin1Char(' '));
      shown = fontMetrics().elidedText(rest, Qt::ElideRight, width());
    }
    painter.drawText(QRect(0, top + index * lineHeight, width(), lineHeight),
                     Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, shown);
  }
}

}  // namespace lumiwren
