#include "platform/linux/x11/capture/DisplayScale.h"

#include <gtest/gtest.h>

namespace lumiwren {
namespace {

struct Choice {
  std::string_view resources, factor;
  std::optional<double> scale;
};

TEST(DisplayScale, WhatTheUserHasChosenCounts) {
  for (const Choice &choice : {
           Choice{"", "", std::nullopt},
           Choice{"Xft.dpi:\t96\n", "", 1},
           Choice{"*background: red\nXft.dpi: 192\nXft.hinting: 1\n", "", 2},
           Choice{"Xft.dpi:\t144", "", 1.5},
           Choice{"Xft.dpi:\t144", "2", 3},
           Choice{"", "1.25", 1.25},
           Choice{"Xft.dpi:\t48\n", "", 1},
           Choice{"Xft.dpi:\t960\n", "", 4},
           Choice{"Xft.dpi:\n", "", std::nullopt},
           Choice{"Xft.dpi: many\n", "-2", std::nullopt},
           Choice{"Xft.dpi.x: 192\n", "wide", std::nullopt},
       }) {
    EXPECT_EQ(chosenScale(choice.resources, choice.factor), choice.scale)
        << choice.resources << " and " << choice.factor;
  }
}

TEST(DisplayScale, WithoutAChoiceTheMonitorsSizeDecides) {
  EXPECT_EQ(suggestedScale(1920, 530), 1);
  EXPECT_EQ(suggestedScale(3840, 600), 1);  // 163 dots per inch
  EXPECT_EQ(suggestedScale(3840, 340), 2);
  EXPECT_EQ(suggestedScale(3840, 0), 1);
}

}  // namespace
}  // namespace lumiwren
