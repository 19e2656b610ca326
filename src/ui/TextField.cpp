#include "ui/TextField.h"

#include "ui/FieldLook.h"
#include "ui/Fonts.h"
#include "ui/HotkeyPress.h"
#include "ui/Spacing.h"

#include <QCoreApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QPointer>
#include <QProxyStyle>
#include <QStyleOption>

#include <algorithm>

namespace lumiwren {
namespace {

constexpr int fieldFontSize = 13;
constexpr int preferredWidth = 200;
constexpr int fieldHorizontalPadding = 8;
constexpr int toolkitMargin = 2;  // which the toolkit adds on either side of the text

/// A field asks its style for everything about it but the text. The rest is that of the toolkit's own style,
/// which is there and the same on every desktop.
class FieldStyle : public QProxyStyle {
public:
  FieldStyle() : QProxyStyle(QStringLiteral("fusion")) { setParent(qApp); }

  static FieldStyle *shared() {
    static QPointer<FieldStyle> style;
    if (!style) {
      style = new FieldStyle;
    }
    return style;
  }

  void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override {
    if (element == PE_PanelLineEdit && widget != nullptr) {
      painter->save();
      drawFieldPanel(*painter, *widget);
      painter->restore();
    } else {
      QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
  }

  QRect subElementRect(SubElement element, const QStyleOption *option, const QWidget *widget) const override {
    if (element == SE_LineEditContents) {
      constexpr int padding = fieldHorizontalPadding - toolkitMargin;
      return option->rect.adjusted(padding, 1, -padding, -1);
    }
    return QProxyStyle::subElementRect(element, option, widget);
  }
};

}  // namespace

TextField::TextField(const QString &name, Face face, QWidget *parent) : QLineEdit(parent), face_(face) {
  setStyle(FieldStyle::shared());
  setAccessibleName(name);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  adaptFont();
  adaptFieldPalette(*this);
}

void TextField::adaptFont() {
  setFont(face_ == Face::Monospaced ? monospacedSystemFont(fieldFontSize) : systemFont(fieldFontSize));
}

QSize TextField::sizeHint() const {
  return {scaledSize(preferredWidth), std::max(scaledSize(controlHeight), fontMetrics().height() + 4)};
}

QSize TextField::minimumSizeHint() const {
  return {scaledSize(4 * fieldHorizontalPadding), sizeHint().height()};
}

void TextField::changeEvent(QEvent *event) {
  if (event->type() == QEvent::PaletteChange) {
    adaptFieldPalette(*this);
  } else if (event->type() == QEvent::FontChange) {
    adaptFont();
    updateGeometry();
  }
  QLineEdit::changeEvent(event);
}

void TextField::inputMethodEvent(QInputMethodEvent *event) {
  isComposing_ = !event->preeditString().isEmpty();
  QLineEdit::inputMethodEvent(event);
}

void TextField::keyPressEvent(QKeyEvent *event) {
  if (isComposing_ && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) {
    return;  // It ends the composing, and is not meant for the window.
  }
  if (isHotkeyPress(*event)) {
    event->ignore();
    return;
  }
  QLineEdit::keyPressEvent(event);
}

}  // namespace lumiwren
