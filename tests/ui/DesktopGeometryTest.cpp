#include "ui/DesktopGeometry.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QScreen>

namespace lumiwren {
namespace {

TEST(DesktopGeometryTest, CountsFromTheBottomOfThePrimaryScreenUpwards) {
  const QRect screen = QGuiApplication::primaryScreen()->geometry();
  EXPECT_EQ(toolkitPosition({0, 0}), QPoint(screen.left(), screen.top() + screen.height()));
  EXPECT_EQ(toolkitPosition({30, 40}), QPoint(screen.left() + 30, screen.top() + screen.height() - 40));
  EXPECT_EQ(toolkitPosition({30, screen.height() + 20.0}), QPoint(screen.left() + 30, screen.top() - 20));
}

}  // namespace
}  // namespace lumiwren
