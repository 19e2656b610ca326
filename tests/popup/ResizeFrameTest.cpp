#include "popup/ResizeFrame.h"

#include <gtest/gtest.h>

namespace lumiwren {
namespace {

struct ResizeCase {
  Qt::Edges edges;
  QPoint distance;
  QRect expected;
};

TEST(ResizeFrame, MovesTheEdgesThatAreHeldWithinTheLimitsAndNoOther) {
  const QRect geometry(100, 100, 400, 300);
  const QSize minimum(300, 200);
  const QSize maximum(800, 600);
  const ResizeCase cases[] = {
      {Qt::RightEdge, {50, 70}, {100, 100, 450, 300}},
      {Qt::LeftEdge, {50, 70}, {150, 100, 350, 300}},
      {Qt::TopEdge, {50, -70}, {100, 30, 400, 370}},
      {Qt::BottomEdge | Qt::RightEdge, {-50, 70}, {100, 100, 350, 370}},
      {Qt::RightEdge, {-900, 0}, {100, 100, 300, 300}},
      {Qt::RightEdge, {900, 0}, {100, 100, 800, 300}},
      {Qt::LeftEdge, {900, 0}, {200, 100, 300, 300}},
      {Qt::LeftEdge | Qt::TopEdge, {-900, -900}, {-300, -200, 800, 600}},
      {{}, {50, 70}, {100, 100, 400, 300}},
  };
  for (const auto &[edges, distance, expected] : cases) {
    EXPECT_EQ(ResizeFrame::resized(geometry, edges, distance, minimum, maximum), expected)
        << "edges " << edges.toInt() << " by " << distance.x() << ", " << distance.y();
  }
}

TEST(ResizeFrame, StepsByWholePixels) {
  EXPECT_EQ(ResizeFrame::wholePixelStep(1), 1);
  EXPECT_EQ(ResizeFrame::wholePixelStep(1.25), 4);
  EXPECT_EQ(ResizeFrame::wholePixelStep(1.5), 2);
  EXPECT_EQ(ResizeFrame::wholePixelStep(2), 1);
  EXPECT_EQ(ResizeFrame::wholePixelStep(1.1), 1);  // There is no such step.
}

}  // namespace
}  // namespace lumiwren
