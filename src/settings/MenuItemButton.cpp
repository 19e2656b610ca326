#include "settings/MenuItemButton.h"

#include "ui/Fonts.h"
#include "ui/PlainToolTip.h"
#include "ui/Spacing.h"
#include "ui/Symbols.h"
#include "ui/TextStyle.h"

#include <QEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>

#include <utility>

namespace lumiwren {
namespace {

constexpr int itemHorizontalPadding = 12;
constexpr int verticalPadding = 6;
constexpr qreal highlightRadius = 4;
constexpr double highlightOpacity = 0.8;
constexpr double trailingOpacity = 0.85;  // on the highlight
constexpr int trailingSize = 12;

}  // namespace

MenuItemButton::MenuItemButton(const QString &label, QWidget *parent) : QAbstractButton(parent) {
  setFocusPolicy(Qt::TabFocus);
  setAttribute(Qt::WA_Hover);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  adaptFont();
  setLabel(label);
}

void MenuItemButton::setLabel(const QString &label) {
  // As QAbstractButton takes it, one ampersand would mark an access key.
  setText(QString(label).replace(u'&', QStringLiteral("&&")));
  setAccessibleName(label);
  updateGeometry();
}

void MenuItemButton::setTrailingText(const QString &text) {
  trailingText_ = text;
  setAccessibleDescription(text);
  updateGeometry();
  update();
}

void MenuItemButton::setTrailingSymbol(std::optional<Symbol> symbol) {
  symbol_ = std::move(symbol);
  setAccessibleDescription(symbol_ ? symbol_->meaning : QString());
  update();
}

QSize MenuItemButton::sizeHint() const {
  const int text = fontMetrics().horizontalAdvance(accessibleName());
  const int trailing = trailingWidth();
  return {2 * itemHorizontalPadding + text + (trailing > 0 ? spacing::small + trailing : 0),
          fontMetrics().height() + 2 * verticalPadding};
}

bool MenuItemButton::event(QEvent *event) {
  if (event->type() == QEvent::ToolTip) {
    showPlainToolTip(*static_cast<const QHelpEvent *>(event), accessibleName(),
                     fontMetrics().horizontalAdvance(accessibleName()) > labelArea().width(), this);
    return true;
  }
  return QAbstractButton::event(event);
}

void MenuItemButton::changeEvent(QEvent *event) {
  QAbstractButton::changeEvent(event);
  if (event->type() == QEvent::FontChange) {
    adaptFont();
    updateGeometry();
  }
}

void MenuItemButton::enterEvent(QEnterEvent *event) {
  QAbstractButton::enterEvent(event);
  if (isEnabled()) {
    setFocus(Qt::MouseFocusReason);
  }
}

void MenuItemButton::leaveEvent(QEvent *event) {
  QAbstractButton::leaveEvent(event);
  if (hasFocus()) {
    // Keys go to the menu still.
    parentWidget()->setFocus(Qt::MouseFocusReason);
  }
}

void MenuItemButton::keyPressEvent(QKeyEvent *event) {
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
    click();
    return;
  }
  // Arrows are the menu's.
  if (event->key() == Qt::Key_Up || event->key() == Qt::Key_Down) {
    event->ignore();
    return;
  }
  QAbstractButton::keyPressEvent(event);
}

void MenuItemButton::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const SemanticColors colors(palette());
  const bool isHighlighted = hasFocus() && isEnabled();
  if (isHighlighted) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(lumiwrenPurple(highlightOpacity));
    painter.drawRoundedRect(rect(), highlightRadius, highlightRadius);
  }
  const QColor normal = isEnabled() ? colors.primary : colors.secondary;
  const QRect label = labelArea();
  painter.setPen(isHighlighted ? QColor(Qt::white) : normal);
  painter.setFont(font());
  painter.drawText(label,
                   static_cast<int>(Qt::AlignVCenter | Qt::TextSingleLine) |
                       static_cast<int>(isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft),
                   fontMetrics().elidedText(accessibleName(), Qt::ElideRight, label.width()));
  const QColor onHighlight = withOpacity(Qt::white, trailingOpacity);
  if (symbol_) {
    const int size = scaledSize(symbol_->size);
    const QRect place = QStyle::visualRect(layoutDirection(), rect(),
                                           QRect(width() - itemHorizontalPadding - size, 0, size, height()));
    drawSymbol(painter, symbol_->name, QRectF(place).center(), size,
               isHighlighted ? onHighlight : colors.*symbol_->color);
  } else if (!trailingText_.isEmpty()) {
    painter.setFont(systemFont(trailingSize));
    painter.setPen(isHighlighted ? onHighlight : colors.secondary);
    const QRect place =
        QStyle::visualRect(layoutDirection(), rect(), rect().adjusted(0, 0, -itemHorizontalPadding, 0));
    painter.drawText(place,
                     static_cast<int>(Qt::AlignVCenter | Qt::TextSingleLine) |
                         static_cast<int>(isRightToLeft() ? Qt::AlignLeft : Qt::AlignRight),
                     trailingText_);
  }
}

void MenuItemButton::adaptFont() {
  setFont(fontOf(TextStyle::Body));
}

int MenuItemButton::trailingWidth() const {
  if (symbol_) {
    return scaledSize(symbol_->size);
  }
  return trailingText_.isEmpty() ? 0
                                 : QFontMetrics(systemFont(trailingSize)).horizontalAdvance(trailingText_);
}

QRect MenuItemButton::labelArea() const {
  const int trailing = trailingWidth();
  const QRect area = rect().adjusted(
      itemHorizontalPadding, 0, -itemHorizontalPadding - (trailing > 0 ? spacing::small + trailing : 0), 0);
  return QStyle::visualRect(layoutDirection(), rect(), area);
}

}  // namespace lumiwren
