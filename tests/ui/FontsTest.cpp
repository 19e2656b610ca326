#include "ui/Fonts.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QEvent>
#include <QFontInfo>
#include <QWidget>

#include <functional>

namespace lumiwren {
namespace {

/// Counts the font changes it is told of, and does something at each.
class Widget : public QWidget {
public:
  using QWidget::QWidget;
  int changes = 0;
  std::function<void()> atChange = [] {};

protected:
  void changeEvent(QEvent *event) override {
    if (event->type() == QEvent::FontChange) {
      ++changes;
      atChange();
    }
    QWidget::changeEvent(event);
  }
};

class FontsTest : public ::testing::Test {
protected:
  void TearDown() override { setTextScale(1); }
};

TEST_F(FontsTest, SizesAreExactlyTheStatedOnesAtFirst) {
  for (const int size : {9, 10, 11, 12, 13, 14, 15, 17}) {
    EXPECT_EQ(systemFont(size).pixelSize(), size);
    EXPECT_EQ(monospacedSystemFont(size).pixelSize(), size);
    EXPECT_EQ(scaledSize(size), size);
  }
  EXPECT_EQ(systemFont(13, QFont::DemiBold).weight(), QFont::DemiBold);
  EXPECT_TRUE(QFontInfo(monospacedSystemFont(12)).fixedPitch());
}

TEST_F(FontsTest, SizesGrowWithTheTextInWholePixels) {
  const struct {
    double scale;
    int size;
    int scaled;
  } table[] = {{1.25, 13, 16}, {1.25, 10, 13}, {1.5, 13, 20},  {2, 13, 26},
               {3, 22, 66},    {0.5, 13, 7},   {0.85, 13, 11}, {0.5, 1, 1}};
  for (const auto &row : table) {
    setTextScale(row.scale);
    EXPECT_EQ(scaledSize(row.size), row.scaled) << row.scale;
    EXPECT_EQ(systemFont(row.size).pixelSize(), row.scaled) << row.scale;
    EXPECT_EQ(monospacedSystemFont(row.size).pixelSize(), row.scaled) << row.scale;
  }
}

TEST_F(FontsTest, EveryWidgetIsToldOnceWithAndWithoutAFontOfItsOwn) {
  Widget window;
  Widget inheriting(&window);
  Widget own(&window);
  own.setFont(systemFont(13));
  Widget inside(&own);
  const auto all = {&window, &inheriting, &own, &inside};
  for (auto *const widget : all) {
    widget->changes = 0;
  }
  setTextScale(1.5);
  for (auto *const widget : all) {
    EXPECT_EQ(widget->changes, 1);
  }
  setTextScale(1.5);
  for (auto *const widget : all) {
    EXPECT_EQ(widget->changes, 1);
  }
}

TEST_F(FontsTest, AWidgetSetsItsFontAnewWhenItIsTold) {
  Widget widget;
  widget.setFont(systemFont(13));
  widget.atChange = [&widget] { widget.setFont(systemFont(13)); };
  setTextScale(2);
  EXPECT_EQ(widget.font().pixelSize(), 26);
  setTextScale(1);
  EXPECT_EQ(widget.font().pixelSize(), 13);
}

TEST_F(FontsTest, WidgetsMayComeAndGoWhileTheyAreTold) {
  Widget window;
  auto *const first = new Widget(&window);
  auto *const second = new Widget(&window);
  // Whichever is told first.
  first->atChange = [&] { delete second; };
  second->atChange = [&] { delete first; };
  setTextScale(1.5);
  EXPECT_EQ(window.children().size(), 1);
}

TEST(TextScale, WhatTheScreenContainsIsNotAppliedTwice) {
  const struct {
    const char *what;
    double desktop;
    double devicePixelRatio;
    double remaining;
  } table[] = {
      {"nothing asked for", 1, 1, 1},
      {"a screen of twice the resolution", 1, 2, 1},
      {"a fractional scale of everything", 1, 1.25, 1},
      {"text alone", 1.25, 1, 1.25},
      {"text alone, on twice the resolution", 1.25, 2, 1.25},
      {"in the resolution", 1.25, 1.25, 1},
      {"in the resolution, which is doubled", 1.25, 2.5, 1},
      {"in the resolution", 1.5, 1.5, 1},
      {"in the resolution, which is doubled", 1.5, 3, 1},
      {"in the resolution", 2, 2, 1},
      {"in the resolution, which is doubled", 2, 4, 1},
      {"text alone", 2, 1, 2},
      {"text alone", 3, 1, 3},
      {"in a resolution in whole dots", 1.1, 106 / 96.0, 1},
      {"in a resolution in whole dots", 1.33, 128 / 96.0, 1},
      {"small text alone", 0.5, 1, 0.5},
      {"small text alone, on twice the resolution", 0.5, 2, 0.5},
      {"small text alone", 0.8, 1, 0.8},
      {"small text in the resolution", 0.5, 0.5, 1},
      {"small text in the resolution", 0.8, 0.8, 1},
      {"small text in the resolution, which is doubled", 0.75, 1.5, 1},
  };
  for (const auto &row : table) {
    EXPECT_EQ(remainingTextScale(row.desktop, row.devicePixelRatio), row.remaining)
        << row.what << ": " << row.desktop << " at " << row.devicePixelRatio;
  }
}

TEST(TextScale, ADesktopsOwnFontCountsWhereItIsUnusual) {
  const struct {
    double points;
    double scale;
  } table[] = {{9, 1},      {9.5, 1},     {10, 1},    {11, 1}, {12, 12.0 / 11},
               {16.5, 1.5}, {8, 8.0 / 9}, {4.5, 0.5}, {-1, 1}, {0, 1}};
  for (const auto &row : table) {
    EXPECT_DOUBLE_EQ(textScaleOfFont(row.points), row.scale) << row.points;
  }
}

}  // namespace
}  // namespace lumiwren
