#include "ui/PlainToolTip.h"

#include <QToolTip>

namespace lumiwren {

void showPlainToolTip(const QHelpEvent &event, const QString &text, bool isCut, QWidget *widget) {
  // A tool tip would take some texts for markup, and others it would not wrap.
  const QString asMarkup = QStringLiteral("<span>%1</span>").arg(text.toHtmlEscaped());
  QToolTip::showText(event.globalPos(), isCut ? asMarkup : QString(), widget);
}

}  // namespace lumiwren
