#pragma once

#include <QString>
#include <QStringView>

#include <vector>

namespace lumiwren {

/// A stretch of text that is to be drawn as emoji, in UTF-16 units.
struct EmojiRange {
  int start;
  int length;
  bool operator==(const EmojiRange &) const = default;
};

/// Emoji and their sequences (skin tones, flags, keycaps, joined families), neighbours in one range. What is
/// a letter or a sign unless a variation selector asks for an emoji is none without it (Unicode Technical
/// Standard 51).
std::vector<EmojiRange> emojiRanges(QStringView text);

/// The family of the desktop's emoji font; empty when it has none.
QString emojiFontFamily();

}  // namespace lumiwren
