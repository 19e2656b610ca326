#include "ui/PanelShadow.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

namespace lumiwren {
namespace {

constexpr double cornerRadius = 12;

/// A picture with the shadow of a panel of that size, and nothing else.
QImage shadowOf(QSize panel, qreal scale) {
  PanelShadow shadow(cornerRadius);
  QImage image(panel.grownBy(PanelShadow::margins) * scale, QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(scale);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  shadow.paint(painter, QRect(QPoint(PanelShadow::margins.left(), PanelShadow::margins.top()), panel));
  return image;
}

class PanelShadowAtScale : public ::testing::TestWithParam<qreal> {
protected:
  const qreal scale = GetParam();
  const QImage image = shadowOf({400, 300}, scale);
  const QRect panel = image.rect().marginsRemoved((QMarginsF(PanelShadow::margins) * scale).toMargins());
  int opacity(int x, int y) const { return qAlpha(image.pixel(x, y)); }
};

TEST_P(PanelShadowAtScale, IsBlackAndNowhereBelowThePanel) {
  const int corner = static_cast<int>(cornerRadius * scale);
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const QRgb pixel = image.pixel(x, y);
      ASSERT_EQ(qRed(pixel) + qGreen(pixel) + qBlue(pixel), 0);
      const bool isInside = panel.adjusted(corner, 0, -corner, 0).contains(x, y) ||
                            panel.adjusted(0, corner, 0, -corner).contains(x, y);
      if (isInside) {
        ASSERT_EQ(qAlpha(pixel), 0) << x << ", " << y;
      }
    }
  }
}

TEST_P(PanelShadowAtScale, FadesOutwardsAndEndsBeforeTheWindowDoes) {
  const int middleX = image.width() / 2;
  const int middleY = image.height() / 2;
  for (int x = 1; x < panel.left(); ++x) {
    ASSERT_GE(opacity(x, middleY), opacity(x - 1, middleY));
  }
  for (int y = panel.bottom() + 2; y < image.height(); ++y) {
    ASSERT_LE(opacity(middleX, y), opacity(middleX, y - 1));
  }
  for (int x = 0; x < image.width(); ++x) {
    ASSERT_LE(opacity(x, 0), 2);
    ASSERT_LE(opacity(x, image.height() - 1), 2);
  }
  for (int y = 0; y < image.height(); ++y) {
    ASSERT_LE(opacity(0, y), 2);
    ASSERT_LE(opacity(image.width() - 1, y), 2);
  }
}

TEST_P(PanelShadowAtScale, IsStrongestBelowAndNeverStrongerThanTheWholeOfIt) {
  const int middleX = image.width() / 2;
  const int above = opacity(middleX, panel.top() - 1);
  const int beside = opacity(panel.left() - 1, image.height() / 2);
  const int below = opacity(middleX, panel.bottom() + 1);
  EXPECT_GT(above, 0);
  EXPECT_LT(above, beside);
  EXPECT_LT(beside, below);
  EXPECT_NEAR(beside, 0.15 * 255 / 2,
              2);  // Right at the edge of what casts it a shadow has half its strength.
  EXPECT_LT(below, 0.15 * 255);
}

TEST_P(PanelShadowAtScale, IsTheSameOnBothSidesAndAlongEachEdge) {
  const int far = static_cast<int>(60 * scale);  // from the corners
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width() / 2; ++x) {
      ASSERT_NEAR(opacity(x, y), opacity(image.width() - 1 - x, y), 1) << x << ", " << y;
    }
    ASSERT_EQ(opacity(image.width() / 2, y), opacity(far, y)) << y;
  }
  for (int x = 0; x < panel.left(); ++x) {
    ASSERT_EQ(opacity(x, image.height() / 2), opacity(x, far)) << x;
  }
}

INSTANTIATE_TEST_SUITE_P(Scales, PanelShadowAtScale, ::testing::Values(1.0, 1.25, 1.5, 2.0));

TEST(PanelShadow, HasTheSameCornersAtEverySize) {
  const QImage small = shadowOf({300, 200}, 1);
  const QImage large = shadowOf({800, 600}, 1);
  const QSize corner(48, 48);
  EXPECT_EQ(small.copy(QRect(QPoint(), corner)), large.copy(QRect(QPoint(), corner)));
  const auto end = [&](const QImage &image) {
    return image.copy(image.width() - corner.width(), image.height() - corner.height(), corner.width(),
                      corner.height());
  };
  EXPECT_EQ(end(small), end(large));
}

}  // namespace
}  // namespace lumiwren
