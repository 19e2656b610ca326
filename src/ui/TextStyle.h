#pragma once

#include <QFont>

namespace lumiwren {

/// What a text is in its window. Its size and weight follow from that.
enum class TextStyle { Badge, Caption, Subheadline, Body, Label, Headline, Title2, Title };

/// The system font of a style, with the text scale of this moment: see setTextScale().
QFont fontOf(TextStyle style);

}  // namespace lumiwren
