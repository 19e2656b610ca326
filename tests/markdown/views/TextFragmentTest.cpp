#include "markdown/views/TextFragment.h"

#include "ui/Fonts.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

#include <cmath>
#include <string>

namespace lumiwren {
namespace {

constexpr qreal lineWidth = 360;

QString words(int count) {
  QString text;
  for (int index = 0; index < count; ++index) {
    text += QStringLiteral("word%1 ").arg(index);
  }
  return text;
}

QString repeated(const char *text, int count) {
  return QString::fromUtf8(text).repeated(count);
}

FragmentText plain(const QString &text) {
  return {.text = text, .font = systemFont(13)};
}

/// The whole text in the toolkit's own layout.
struct Reference {
  explicit Reference(const QString &text) : layout(text, systemFont(13)) {
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setAlignment(text.isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft);
    option.setTextDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    layout.setTextOption(option);
    layout.beginLayout();
    for (auto line = layout.createLine(); line.isValid(); line = layout.createLine()) {
      line.setLineWidth(lineWidth);
      line.setPosition({0, height});
      height += std::ceil(line.height());
    }
    layout.endLayout();
  }
  QRectF characterRect(int position) const {
    const auto line = layout.lineForTextPosition(position);
    const qreal from = line.cursorToX(position);
    const qreal to = line.cursorToX(position + 1);
    return {QPointF(std::min(from, to), line.y()), QSizeF(std::abs(to - from), line.height())};
  }
  QTextLayout layout;
  qreal height = 0;
};

// The family is repeated less often: the toolkit cuts it in two at the 4,096th unit of a text.
TEST(TextFragment, ALongTextIsLaidOutAsTheToolkitDoesItInOne) {
  const QString texts[] = {words(2000),
                           repeated("x", 9000),
                           repeated("\u6f22\u5b57", 3000),
                           repeated("\u0645\u0631\u062d\u0628\u0627 ", 1500),
                           repeated("\U0001F468\u200D\U0001F469\u200D\U0001F467 ", 400),
                           repeated("e\u0301", 4000)};
  for (const auto &text : texts) {
    const Reference reference(text);
    TextFragment fragment;
    fragment.setText(plain(text));
    EXPECT_EQ(fragment.layOut(lineWidth), reference.height) << text.left(10).toStdString();
    for (int position = 0; position < text.size(); position += 97) {
      if (!reference.layout.isValidCursorPosition(position)) {
        continue;  // inside a character
      }
      const QRectF expected = reference.characterRect(position);
      const QRectF rect = fragment.characterRect(position);
      ASSERT_NEAR(rect.left(), expected.left(), 0.1) << text.left(10).toStdString() << position;
      ASSERT_EQ(rect.top(), expected.top()) << text.left(10).toStdString() << position;
    }
  }
}

TEST(TextFragment, ATextThatGrowsLooksAsIfItHadBeenThereAtOnce) {
  const QString text = words(1200);
  TextFragment grown;
  for (int length = 0; length < text.size(); length += 61) {
    grown.setText(plain(text.left(length)));
    grown.layOut(lineWidth);
  }
  grown.setText(plain(text));
  TextFragment fresh;
  fresh.setText(plain(text));
  EXPECT_EQ(grown.layOut(lineWidth), fresh.layOut(lineWidth));
  for (int position = 0; position < text.size(); position += 31) {
    ASSERT_EQ(grown.characterRect(position), fresh.characterRect(position)) << position;
  }
}

TEST(TextFragment, AChangeFarBackIsSeen) {
  QString text = words(1200);
  TextFragment fragment;
  fragment.setText(plain(text));
  fragment.layOut(lineWidth);
  text.replace(100, 50, QStringLiteral("W").repeated(90));
  fragment.setText(plain(text));
  TextFragment fresh;
  fresh.setText(plain(text));
  EXPECT_EQ(fragment.layOut(lineWidth), fresh.layOut(lineWidth));
  EXPECT_EQ(fragment.characterRect(160), fresh.characterRect(160));
}

TEST(TextFragment, ATextWithoutSpacesThatIsVeryLongIsLaidOutInATimeThatGrowsWithItsLengthOnly) {
  // In one layout of the toolkit this is a matter of a minute.
  TextFragment fragment;
  fragment.setText(plain(QStringLiteral("x").repeated(1'000'000)));
  EXPECT_GT(fragment.layOut(lineWidth), 100'000);
  EXPECT_GT(fragment.characterRect(999'999).top(), 100'000);
}

TEST(TextFragment, PositionsAndPlacesAnswerEachOtherAcrossPieces) {
  for (const auto wrapping : {TextFragment::Wrapping::Wrap, TextFragment::Wrapping::None}) {
    TextFragment fragment(wrapping);
    fragment.setText(plain(words(1000)));
    fragment.layOut(lineWidth);
    for (int position = 0; position < fragment.length(); position += 53) {
      const QRectF rect = fragment.characterRect(position);
      ASSERT_EQ(fragment.positionAt({rect.left() + 0.1, rect.center().y()}), position);
    }
  }
}

TEST(TextFragment, ALineThatIsNotWrappedIsAsWideAsItsText) {
  const QString text = words(1000);
  TextFragment fragment(TextFragment::Wrapping::None);
  fragment.setText(plain(text));
  EXPECT_LT(fragment.layOut(lineWidth), 40);
  QTextLayout reference(text, systemFont(13));
  reference.beginLayout();
  auto line = reference.createLine();
  line.setLineWidth(1 << 20);
  reference.endLayout();
  EXPECT_NEAR(fragment.naturalWidth(), line.naturalTextWidth(), 2);
}

TEST(TextFragment, ASelectionIsPaintedWhereItsTextIs) {
  TextFragment fragment;
  fragment.setText(plain(words(1000)));
  fragment.layOut(lineWidth);
  const SemanticColors colors{QPalette()};
  const auto paint = [&](int from, int to) {
    QImage image(static_cast<int>(lineWidth), 400, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    const qreal top = fragment.characterRect(4000).top() - 100;
    painter.translate(0, -top);
    fragment.paint({.painter = painter,
                    .colors = colors,
                    .exposed = QRectF(0, top, lineWidth, 400),
                    .selectionStart = from,
                    .selectionEnd = to},
                   Qt::black);
    return image;
  };
  const auto without = paint(0, 0);
  const auto with = paint(4000, 4003);
  const QRectF rect = fragment.characterRect(4001);
  const QPoint inside(static_cast<int>(rect.center().x()), 101);
  EXPECT_NE(with.pixel(inside), without.pixel(inside));
  EXPECT_EQ(with.copy(0, 0, 360, 90), without.copy(0, 0, 360, 90));
  EXPECT_EQ(with.copy(0, 130, 360, 270), without.copy(0, 130, 360, 270));
}

}  // namespace
}  // namespace lumiwren
