#include "ui/BorderedButton.h"

#include "ui/Fonts.h"
#include "ui/Palette.h"
#include "ui/Symbols.h"

#include <QPainter>

namespace lumiwren {
namespace {

constexpr int fontSize = 11;
constexpr int symbolSize = 13;
constexpr int spacing = 4;
constexpr int horizontalPadding = 9;
constexpr int buttonHeight = 24;

}  // namespace

BorderedButton::BorderedButton(QWidget *parent) : QPushButton(parent) {
  setFont(systemFont(fontSize));
  setFocusPolicy(Qt::TabFocus);
  setAttribute(Qt::WA_Hover);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void BorderedButton::setLabel(const QString &symbolName, const QString &text) {
  symbolName_ = symbolName;
  setText(text);
  updateGeometry();
  update();
}

QSize BorderedButton::sizeHint() const {
  return {2 * horizontalPadding + symbolSize + spacing + fontMetrics().horizontalAdvance(text()),
          buttonHeight};
}

void BorderedButton::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const SemanticColors colors(palette());
  const QRectF outline = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
  painter.setPen(hasFocus() && window()->isActiveWindow() ? QPen(lumiwrenPurple(), 1.5)
                                                          : QPen(withOpacity(colors.primary, 0.2), 1));
  painter.setBrush(isDown()       ? withOpacity(colors.primary, 0.16)
                   : underMouse() ? withOpacity(colors.primary, 0.09)
                                  : withOpacity(colors.primary, 0.04));
  painter.drawRoundedRect(outline, 5.5, 5.5);
  painter.drawPixmap(horizontalPadding, (rect().height() - symbolSize) / 2,
                     symbol(symbolName_, symbolSize, colors.primary, devicePixelRatioF()));
  painter.setPen(colors.primary);
  painter.drawText(rect().adjusted(horizontalPadding + symbolSize + spacing, 0, 0, 0),
                   Qt::AlignLeft | Qt::AlignVCenter, text());
}

}  // namespace lumiwren
