#include "markdown/views/Emoji.h"

#include <QFont>
#include <QFontInfo>

#include <algorithm>
#include <array>

namespace lumiwren {
namespace {

constexpr char32_t joiner = 0x200D;
constexpr char32_t emojiSelector = 0xFE0F;
constexpr char32_t textSelector = 0xFE0E;
constexpr char32_t keycap = 0x20E3;

struct Span {
  char32_t first;
  char32_t last;
};

// Emoji_Presentation below U+1F000, from emoji-data.txt of Unicode 15.
constexpr std::array<Span, 38> presentedAsEmoji{
    {{0x231A, 0x231B},   {0x23E9, 0x23EC},   {0x23F0, 0x23F0},  {0x23F3, 0x23F3},   {0x25FD, 0x25FE},
     {0x2614, 0x2615},   {0x2648, 0x2653},   {0x267F, 0x267F},  {0x2693, 0x2693},   {0x26A1, 0x26A1},
     {0x26AA, 0x26AB},   {0x26BD, 0x26BE},   {0x26C4, 0x26C5},  {0x26CE, 0x26CE},   {0x26D4, 0x26D4},
     {0x26EA, 0x26EA},   {0x26F2, 0x26F3},   {0x26F5, 0x26F5},  {0x26FA, 0x26FA},   {0x26FD, 0x26FD},
     {0x2705, 0x2705},   {0x270A, 0x270B},   {0x2728, 0x2728},  {0x274C, 0x274C},   {0x274E, 0x274E},
     {0x2753, 0x2755},   {0x2757, 0x2757},   {0x2795, 0x2797},  {0x27B0, 0x27B0},   {0x27BF, 0x27BF},
     {0x2B1B, 0x2B1C},   {0x2B50, 0x2B50},   {0x2B55, 0x2B55},  {0x1F004, 0x1F004}, {0x1F0CF, 0x1F0CF},
     {0x1F18E, 0x1F18E}, {0x1F191, 0x1F19A}, {0x1F1E6, 0x1F1FF}}};

bool isPresentedAsEmoji(char32_t character) {
  if (character >= 0x1F300) {
    return character <= 0x1FAFF && (character < 0x1F650 || character > 0x1F67F) &&
           (character < 0x1F700 || character > 0x1F7DF) && (character < 0x1F800 || character > 0x1F8FF);
  }
  return std::any_of(presentedAsEmoji.begin(), presentedAsEmoji.end(), [character](const Span &span) {
    return character >= span.first && character <= span.last;
  });
}

/// What belongs to the emoji before it.
bool continues(char32_t character) {
  return character == joiner || character == emojiSelector || character == keycap ||
         (character >= 0x1F3FB && character <= 0x1F3FF) || (character >= 0xE0020 && character <= 0xE007F);
}

/// The character at a place; nothing at the end.
char32_t characterAt(QStringView text, qsizetype at) {
  if (at >= text.size()) {
    return 0;
  }
  const bool isPair = at + 1 < text.size() && text[at].isHighSurrogate() && text[at + 1].isLowSurrogate();
  return isPair ? QChar::surrogateToUcs4(text[at], text[at + 1]) : text[at].unicode();
}

int unitsOf(char32_t character) {
  return QChar::requiresSurrogates(character) ? 2 : 1;
}

}  // namespace

std::vector<EmojiRange> emojiRanges(QStringView text) {
  std::vector<EmojiRange> ranges;
  // Nearly all texts have none; nothing below this can be one or ask for one.
  if (std::none_of(text.begin(), text.end(), [](QChar unit) { return unit.unicode() >= 0x20E3; })) {
    return ranges;
  }
  bool isJoined = false;
  int next = 0;
  for (int start = 0; start < text.size(); start = next) {
    const char32_t value = characterAt(text, start);
    next = start + unitsOf(value);
    const char32_t following = characterAt(text, next);
    const bool asks = following == emojiSelector || (following == keycap && value < 0x80);
    const bool isEmoji = isJoined || asks || (isPresentedAsEmoji(value) && following != textSelector);
    isJoined = false;
    if (!isEmoji) {
      continue;
    }
    for (char32_t more = following; continues(more); more = characterAt(text, next)) {
      isJoined = more == joiner;
      next += unitsOf(more);
    }
    if (!ranges.empty() && ranges.back().start + ranges.back().length == start) {
      ranges.back().length = next - ranges.back().start;
    } else {
      ranges.push_back({start, next - start});
    }
  }
  return ranges;
}

QString emojiFontFamily() {
  // The name under which font configurations know whichever font it is.
  static const QString family = [] {
    const QString found = QFontInfo(QFont(QStringLiteral("emoji"))).family();
    return found.contains(QLatin1String("emoji"), Qt::CaseInsensitive) ? found : QString();
  }();
  return family;
}

}  // namespace lumiwren
