#include "ui/ProgressIndicator.h"

#include "ui/Fonts.h"
#include "ui/Motion.h"
#include "ui/Rendering.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QImage>

namespace lumiwren {
namespace {

using testing::inkOf;
using testing::rendered;

class ProgressIndicatorTest : public ::testing::Test {
protected:
  void TearDown() override {
    setTextScale(1);
    setReducesMotion(false);
  }

  bool turns() const { return indicator_.findChild<QTimer *>()->isActive(); }

  ProgressIndicator indicator_{16};
};

TEST_F(ProgressIndicatorTest, IsDrawnAtFourFifthsAboutItsCentre) {
  EXPECT_EQ(indicator_.size(), QSize(16, 16));
  // 12.8 of 16, in tenths of a point.
  const QRect ink = inkOf(rendered(indicator_, 10));
  EXPECT_NEAR(ink.left(), 16, 1);
  EXPECT_NEAR(ink.top(), 16, 1);
  EXPECT_NEAR(ink.right() + 1, 144, 1);
  EXPECT_NEAR(ink.bottom() + 1, 144, 1);
}

TEST_F(ProgressIndicatorTest, TurnsWhileItIsShown) {
  EXPECT_FALSE(turns());
  indicator_.show();
  EXPECT_TRUE(turns());
  const QImage before = rendered(indicator_, 1);
  const QDeadlineTimer limit(10000);
  while (rendered(indicator_, 1) == before && !limit.hasExpired()) {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
  EXPECT_NE(rendered(indicator_, 1), before);
  indicator_.hide();
  EXPECT_FALSE(turns());
}

TEST_F(ProgressIndicatorTest, StandsStillButIsThereWithoutMotion) {
  setReducesMotion(true);
  indicator_.show();
  EXPECT_FALSE(turns());
  EXPECT_FALSE(inkOf(rendered(indicator_, 1)).isEmpty());
}

TEST_F(ProgressIndicatorTest, FollowsTheWishForMotionWhileItIsShown) {
  indicator_.show();
  setReducesMotion(true);
  EXPECT_FALSE(turns());
  setReducesMotion(false);
  EXPECT_TRUE(turns());
  indicator_.hide();
  setReducesMotion(true);
  setReducesMotion(false);
  EXPECT_FALSE(turns());
}

TEST_F(ProgressIndicatorTest, GrowsWithTheText) {
  setTextScale(1.5);
  EXPECT_EQ(indicator_.size(), QSize(24, 24));
  EXPECT_EQ(ProgressIndicator(16).size(), QSize(24, 24));
}

TEST_F(ProgressIndicatorTest, IsABusyProgressBarToAssistiveTechnology) {
  auto *const accessible = QAccessible::queryAccessibleInterface(&indicator_);
  ASSERT_NE(accessible, nullptr);
  EXPECT_EQ(accessible->role(), QAccessible::ProgressBar);
  EXPECT_EQ(accessible->text(QAccessible::Name), QStringLiteral("Loading"));
  EXPECT_TRUE(accessible->state().busy);
}

}  // namespace
}  // namespace lumiwren
