#pragma once

#include <QString>
#include <QWidget>

namespace lumiwren {

/// Has a screen reader say a text when it has said what it is saying now. For callers that have seen that
/// assistive technology runs (QAccessible::isActive()).
void announce(QWidget &source, const QString &text);

}  // namespace lumiwren
