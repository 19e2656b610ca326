#include "ui/SymbolButton.h"

#include "ui/Fonts.h"
#include "ui/Rendering.h"
#include "ui/Symbols.h"

#include <gtest/gtest.h>

#include <QImage>

namespace lumiwren {
namespace {

using testing::find;
using testing::inkOf;
using testing::rendered;

const QColor green(10, 200, 30);

class SymbolButtonTest : public ::testing::Test {
protected:
  void TearDown() override { setTextScale(1); }

  QImage drawing(int size, qreal scale, const QColor &color) const {
    return symbol(QStringLiteral("xmark.circle.fill"), size, color, scale)
        .toImage()
        .convertToFormat(QImage::Format_ARGB32_Premultiplied);
  }

  SymbolButton button_{QStringLiteral("xmark.circle.fill"), 14, QStringLiteral("Close"),
                       [](const SemanticColors & /*colors*/) { return green; }};
};

TEST_F(SymbolButtonTest, ShowsTheSymbolInItsFullColourAndNothingElse) {
  button_.resize(button_.sizeHint());
  EXPECT_EQ(rendered(button_, 1).copy(2, 2, 14, 14), drawing(14, 1, green));
  EXPECT_EQ(inkOf(rendered(button_, 1)), inkOf(drawing(14, 1, green)).translated(2, 2));
}

TEST_F(SymbolButtonTest, ADisabledSymbolHasItsColourToo) {
  button_.resize(button_.sizeHint());
  button_.setEnabled(false);
  EXPECT_EQ(rendered(button_, 1).copy(2, 2, 14, 14), drawing(14, 1, green));
}

TEST_F(SymbolButtonTest, IsOnWholePixelsAtEveryScale) {
  for (const qreal scale : {1.0, 1.25, 1.5, 1.75, 2.0, 3.0}) {
    for (const int side : {18, 19, 24, 31}) {
      button_.resize(side, side);
      const QImage expected = drawing(14, scale, green);
      const auto corner = find(expected, rendered(button_, scale));
      ASSERT_TRUE(corner) << "blurred at scale " << scale << ", side " << side;
      EXPECT_NEAR(corner->x() + expected.width() / 2.0, side * scale / 2, 0.5);
      EXPECT_NEAR(corner->y() + expected.height() / 2.0, side * scale / 2, 0.5);
    }
  }
}

TEST_F(SymbolButtonTest, IsFaintWhilePressed) {
  button_.resize(button_.sizeHint());
  button_.setDown(true);
  const QColor middle = rendered(button_, 1).pixelColor(9, 5);
  EXPECT_NEAR(middle.alphaF(), 0.6, 0.01);
}

TEST_F(SymbolButtonTest, AFaintDiscIsBehindItUnderThePointer) {
  button_.resize(button_.sizeHint());
  button_.setAttribute(Qt::WA_UnderMouse);
  const QImage hovered = rendered(button_, 1);
  EXPECT_EQ(inkOf(hovered), QRect(0, 0, 18, 18));
  EXPECT_NEAR(hovered.pixelColor(9, 0).alphaF(), 0.1, 0.05);
  EXPECT_EQ(hovered.pixelColor(0, 0).alpha(), 0);
  EXPECT_EQ(hovered.pixelColor(9, 5), green);

  button_.setEnabled(false);
  EXPECT_EQ(rendered(button_, 1).pixelColor(9, 0).alpha(), 0);
}

TEST_F(SymbolButtonTest, GrowsWithTheText) {
  EXPECT_EQ(button_.sizeHint(), QSize(18, 18));
  setTextScale(1.5);
  EXPECT_EQ(button_.sizeHint(), QSize(25, 25));
  button_.resize(button_.sizeHint());
  EXPECT_TRUE(find(drawing(21, 1, green), rendered(button_, 1)));
}

TEST_F(SymbolButtonTest, CanTurnIntoAnother) {
  button_.resize(button_.sizeHint());
  button_.setSymbol(QStringLiteral("checkmark"), QStringLiteral("Done"));
  const QImage expected = symbol(QStringLiteral("checkmark"), 14, green, 1).toImage();
  EXPECT_EQ(inkOf(rendered(button_, 1)), inkOf(expected).translated(2, 2));
  EXPECT_EQ(button_.accessibleName(), QStringLiteral("Done"));
}

TEST_F(SymbolButtonTest, IsNotFocusedByAClick) {
  EXPECT_EQ(button_.focusPolicy(), Qt::TabFocus);
  EXPECT_EQ(button_.accessibleName(), QStringLiteral("Close"));
}

}  // namespace
}  // namespace lumiwren
