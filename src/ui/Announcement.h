#pragma once

#include <QString>
#include <QWidget>

namespace lumiwren {

/// Has a screen reader say a text when it has said what it is saying now. Nothing happens when no assistive
/// technology runs, or when the text is empty.
void announce(QWidget &source, const QString &text);

}  // namespace lumiwren
