#pragma once

#include <QHelpEvent>
#include <QString>
#include <QWidget>

namespace lumiwren {

/// Shows a text that is cut off in its widget as a tool tip, word for word and on as many lines as it needs;
/// or takes away what is shown, where it is not cut.
void showPlainToolTip(const QHelpEvent &event, const QString &text, bool isCut, QWidget *widget);

}  // namespace lumiwren
