#include "ui/BoxedLabel.h"

#include "ui/Rendering.h"

#include <gtest/gtest.h>

namespace lumiwren {
namespace {

TEST(BoxedLabelTest, StandsOnTheControlBackgroundWithItsPadding) {
  BoxedLabel label(QStringLiteral("Default"), TextStyle::Badge, {5, 2, 5, 2}, &SemanticColors::secondary);
  const TextLabel plain(QStringLiteral("Default"), TextStyle::Badge);
  EXPECT_EQ(label.sizeHint(), plain.sizeHint() + QSize(10, 4));
  label.resize(label.sizeHint());
  const QImage picture = testing::rendered(label, 1);
  const SemanticColors colors(label.palette());
  EXPECT_EQ(picture.pixel(2, picture.height() / 2), colors.controlBackground.rgb());
  EXPECT_EQ(qAlpha(picture.pixel(0, 0)), 0);
}

TEST(BoxedLabelTest, HasAnAccentedOutlineWhileItIsActive) {
  BoxedLabel label(QStringLiteral("E"), TextStyle::Label, {8, 4, 8, 4});
  label.resize(60, 28);
  const SemanticColors colors(label.palette());
  EXPECT_NE(testing::rendered(label, 1).pixel(30, 0), colors.accent.rgb());
  label.setActive(true);
  EXPECT_EQ(testing::rendered(label, 1).pixel(30, 0), colors.accent.rgb());
}

}  // namespace
}  // namespace lumiwren
