#include "markdown/views/Emoji.h"

#include "markdown/views/TextFragment.h"
#include "ui/Fonts.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <ostream>

namespace lumiwren {

void PrintTo(const EmojiRange &range, std::ostream *stream) {
  *stream << range.start << "+" << range.length;
}

namespace {

using Ranges = std::vector<EmojiRange>;

TEST(EmojiRanges, AreThoseOfWholeSequences) {
  const struct {
    const char *text;
    Ranges ranges;
  } cases[] = {
      {"plain text, 123 #*", {}},
      {"caf\u00e9 \u65e5\u672c\u8a9e \u2192 \u221e", {}},
      {"a \U0001F426 b", {{2, 2}}},
      {"\U0001F44D\U0001F3FD", {{0, 4}}},                        // a skin tone
      {"\U0001F1EF\U0001F1F5", {{0, 4}}},                        // a flag
      {"\U0001F468\u200D\U0001F469\u200D\U0001F467", {{0, 8}}},  // a family
      {"\u2764", {}},                                            // a sign
      {"\u2764\uFE0F", {{0, 2}}},                                // that is to be an emoji
      {"\U0001F426\uFE0E", {}},                                  // an emoji that is not to be one
      {"1\uFE0F\u20E3 1", {{0, 3}}},                             // a key
      {"\u2705 done", {{0, 1}}},
      {"\u2714 done", {}},
      {"\U0001F426\U0001F426", {{0, 4}}},
      {"\U0001F3F4\U000E0067\U000E0062\U000E0073\U000E0063\U000E0074\U000E007F", {{0, 14}}},
  };
  for (const auto &[text, ranges] : cases) {
    EXPECT_EQ(emojiRanges(QString::fromUtf8(text)), ranges) << text;
  }
}

TEST(EmojiRanges, AreDrawnInColourAndAsOne) {
  TextFragment fragment;
  const auto widthOf = [&](const char *text) {
    fragment.setText({.text = QString::fromUtf8(text), .font = systemFont(26)});
    fragment.layOut(400);
    return fragment.naturalWidth();
  };
  EXPECT_NEAR(widthOf("\U0001F44D\U0001F3FD"), widthOf("\U0001F44D"), 1);
  QImage image(400, 60, QImage::Format_RGB32);
  image.fill(Qt::white);
  QPainter painter(&image);
  const SemanticColors colors{QPalette()};
  fragment.paint({.painter = painter, .colors = colors, .exposed = QRectF(image.rect())}, Qt::black);
  int most = 0;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      most = std::max(most, image.pixelColor(x, y).hsvSaturation());
    }
  }
  EXPECT_GT(most, 100);
}

}  // namespace
}  // namespace lumiwren
