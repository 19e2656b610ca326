#include "platform/linux/x11/MonitorLayout.h"

#include <gtest/gtest.h>

#include <optional>

namespace lumiwren::testing {
namespace {

constexpr PixelRect leftMonitor{0, 0, 1000, 800};
constexpr PixelRect rightMonitor{1000, 200, 600, 600};

const MonitorLayout twoMonitors{
    .screen = {0, 0, 1600, 800}, .monitors = {leftMonitor, rightMonitor}, .primaryIndex = 1};

TEST(MonitorLayout, ThePrimaryMonitorIsTheMarkedOneElseTheFirstElseTheScreen) {
  EXPECT_EQ(twoMonitors.primary(), rightMonitor);
  EXPECT_EQ((MonitorLayout{twoMonitors.screen, twoMonitors.monitors, std::nullopt}.primary()), leftMonitor);
  EXPECT_EQ((MonitorLayout{twoMonitors.screen, {}, std::nullopt}.primary()), twoMonitors.screen);
}

TEST(MonitorLayout, TheMainMonitorHasTheMiddleOfTheFocusedWindow) {
  struct {
    std::optional<PixelRect> window;
    PixelRect expected;
  } const cases[] = {
      {PixelRect{10, 10, 100, 100}, leftMonitor},
      {PixelRect{949, 300, 100, 100}, leftMonitor},
      {PixelRect{950, 300, 100, 100}, rightMonitor},
      {PixelRect{-100, -100, 10, 10}, rightMonitor},
      {PixelRect{1200, 50, 100, 100}, rightMonitor},  // above the right monitor, where nothing is seen
      {std::nullopt, rightMonitor},
  };
  for (const auto &expectation : cases) {
    EXPECT_EQ(twoMonitors.main(expectation.window), expectation.expected);
  }
}

Strut strut(Strut::Value edge, std::uint32_t width, Strut::Value start, std::uint32_t from,
            std::uint32_t to) {
  Strut result;
  result.values.at(edge) = width;
  result.values.at(start) = from;
  result.values.at(start + 1U) = to;
  return result;
}

TEST(MonitorLayout, StrutsTakeTheirPartOfTheMonitorsTheyLieOn) {
  const Strut top = strut(Strut::Top, 30, Strut::TopStartX, 0, 999);
  const Strut bottom = strut(Strut::Bottom, 40, Strut::BottomStartX, 1000, 1599);
  const Strut left = strut(Strut::Left, 50, Strut::LeftStartY, 0, 799);
  const Strut right = strut(Strut::Right, 60, Strut::RightStartY, 200, 799);
  const std::vector<Strut> all{top, bottom, left, right};
  EXPECT_EQ(twoMonitors.visibleFrame(leftMonitor, all), (PixelRect{50, 30, 950, 770}));
  EXPECT_EQ(twoMonitors.visibleFrame(rightMonitor, all), (PixelRect{1000, 200, 540, 560}));
  EXPECT_EQ(twoMonitors.visibleFrame(leftMonitor, {}), leftMonitor);
}

TEST(MonitorLayout, WidthsCountFromTheEdgeOfTheScreenAlsoForAMonitorThatIsNotAtThatEdge) {
  // A panel on the right monitor's top, which is 200 pixels below the screen's.
  const Strut top = strut(Strut::Top, 230, Strut::TopStartX, 1000, 1599);
  EXPECT_EQ(twoMonitors.visibleFrame(rightMonitor, {top}), (PixelRect{1000, 230, 600, 570}));
  EXPECT_EQ(twoMonitors.visibleFrame(leftMonitor, {top}), leftMonitor);
}

TEST(MonitorLayout, AStrutBetweenTwoMonitorsConcernsTheFartherOne) {
  // A panel on the right monitor's left edge.
  const Strut left = strut(Strut::Left, 1050, Strut::LeftStartY, 200, 799);
  EXPECT_EQ(twoMonitors.visibleFrame(leftMonitor, {left}), leftMonitor);
  EXPECT_EQ(twoMonitors.visibleFrame(rightMonitor, {left}), (PixelRect{1050, 200, 550, 600}));
}

TEST(MonitorLayout, RectanglesThatDoNotMeetHaveAnIntersectionWithoutSize) {
  const PixelRect nothing = intersection(leftMonitor, rightMonitor);
  EXPECT_EQ(nothing.width, 0);
  EXPECT_EQ(intersection({0, 0, 10, 10}, {5, 6, 10, 10}), (PixelRect{5, 6, 5, 4}));
}

}  // namespace
}  // namespace lumiwren::testing
