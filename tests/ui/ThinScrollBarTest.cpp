#include "ui/ThinScrollBar.h"

#include "ui/LookPalettes.h"
#include "ui/Palette.h"
#include "ui/Rendering.h"

#include <gtest/gtest.h>

#include <QImage>

namespace lumiwren {
namespace {

using testing::inkOf;
using testing::rendered;

TEST(ThinScrollBar, IsInvisibleWhileThereIsNothingToScroll) {
  ThinScrollBar bar;
  bar.resize(10, 200);
  bar.setRange(0, 0);
  EXPECT_TRUE(inkOf(rendered(bar, 1)).isEmpty());
}

TEST(ThinScrollBar, TheThumbIsThinAndMovesDown) {
  ThinScrollBar bar;
  EXPECT_EQ(bar.sizeHint().width(), 10);
  bar.resize(10, 200);
  bar.setRange(0, 1000);
  bar.setPageStep(200);
  const QRect top = inkOf(rendered(bar, 2));
  bar.setValue(1000);
  const QRect bottom = inkOf(rendered(bar, 2));
  EXPECT_EQ(top.width(), 10);
  EXPECT_EQ(top.left(), 5);
  EXPECT_EQ(bottom.width(), 10);
  EXPECT_GT(bottom.top(), top.bottom());
}

TEST(ThinScrollBar, IsToldApartFromBothLooks) {
  for (const auto &look : {lightPalette(), darkPalette()}) {
    for (const auto role : {QPalette::Window, QPalette::Base}) {
      ThinScrollBar bar;
      bar.setPalette(look);
      bar.resize(10, 200);
      bar.setRange(0, 1000);
      bar.setPageStep(600);
      const QColor background = look.color(role);
      const QImage image = rendered(bar, 1, background);
      EXPECT_GE(contrastRatio(image.pixelColor(5, 60), background), 3);
    }
  }
}

}  // namespace
}  // namespace lumiwren
