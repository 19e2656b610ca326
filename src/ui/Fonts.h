#pragma once

#include <QFont>

namespace lumiwren {

/// The desktop's user-interface font. Sizes are in points, one of which is one device-independent pixel where
/// the text scale is 1.
QFont systemFont(int size, QFont::Weight weight = QFont::Normal);
/// The desktop's font of fixed width.
QFont monospacedSystemFont(int size);
/// The size of what stands beside text of the system font and grows with it: symbols, wheels, bubbles.
int scaledSize(int size);

/// How much larger than stated text is. Main thread; 1 until it is set. When it changes, every widget gets a
/// QEvent::FontChange in changeEvent(), whether it has a font of its own or not: there a widget sets its font
/// anew, if it has one by setFont(systemFont(...)), and lays out anew what it measured with such fonts.
double textScale();
void setTextScale(double scale);

/// What is left of the desktop's text scale for the program to apply. On X11 desktops it is usually part of
/// the display's resolution and thereby of the scale of everything: `devicePixelRatio` then is a multiple of
/// it.
double remainingTextScale(double desktopTextScale, double devicePixelRatio);
/// What a desktop's font of this size says about the size of text: nothing from 9 to 11, which desktops have
/// by default, nor where it is not in points.
double textScaleOfFont(double pointSize);

}  // namespace lumiwren
