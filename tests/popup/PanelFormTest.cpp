#include "popup/PanelForm.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <vector>

namespace lumiwren {
namespace {

/// What the parts leave of a window, row by row; every pixel at most once.
std::vector<std::vector<int>> drawn(const std::vector<WindowPart> &parts, int width, int height) {
  std::vector<std::vector<int>> pixels(static_cast<std::size_t>(height),
                                       std::vector<int>(static_cast<std::size_t>(width)));
  for (const auto &part : parts) {
    for (int y = part.y; y < part.y + part.height; ++y) {
      for (int x = part.x; x < part.x + part.width; ++x) {
        ++pixels.at(static_cast<std::size_t>(y)).at(static_cast<std::size_t>(x));
      }
    }
  }
  return pixels;
}

TEST(RoundedForm, CutsNothingButFourEqualCorners) {
  const int width = 60;
  const int height = 50;
  for (const double radius : {12.0, 15.0, 18.0, 22.5}) {
    const auto form = roundedForm({width, height}, radius);
    EXPECT_TRUE(form.clickable.empty());
    EXPECT_EQ(form.shadow, WindowForm::Shadow{});
    const auto pixels = drawn(form.visible, width, height);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        const auto at = [&](int column, int row) {
          return pixels[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
        };
        ASSERT_LE(at(x, y), 1) << "twice at " << x << ", " << y;
        ASSERT_EQ(at(x, y), at(width - 1 - x, y));
        ASSERT_EQ(at(x, y), at(x, height - 1 - y));
        const double dx = radius - (x + 0.5);
        const double dy = radius - (y + 0.5);
        if (x < width / 2 && y < height / 2) {
          // A pixel whose middle is clearly inside the circle is there, one that is clearly outside is not.
          const double distance = dx > 0 && dy > 0 ? std::hypot(dx, dy) : 0;
          if (distance < radius - 0.75) {
            ASSERT_EQ(at(x, y), 1) << x << ", " << y << " of radius " << radius;
          } else if (distance > radius + 0.75) {
            ASSERT_EQ(at(x, y), 0) << x << ", " << y << " of radius " << radius;
          }
        }
      }
    }
  }
}

TEST(ShadowedForm, IsClickedInThePanelAndALittleAroundIt) {
  const auto form = shadowedForm(432, 332, {16, 12, 16, 20}, 6);
  EXPECT_TRUE(form.visible.empty());
  EXPECT_EQ(form.clickable, (std::vector<WindowPart>{{10, 6, 412, 312}}));
  EXPECT_EQ(form.shadow, (WindowForm::Shadow{16, 12, 16, 20}));
}

}  // namespace
}  // namespace lumiwren
