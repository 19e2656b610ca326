#include "base/Handle.h"

#include <gtest/gtest.h>

#include <memory>

namespace lumiwren {
namespace {

TEST(HandleTest, EndsItsEffectOnce) {
  int ended = 0;
  {
    Handle handle([&] { ++ended; });
    EXPECT_TRUE(handle);
    EXPECT_EQ(ended, 0);
    handle.reset();
    EXPECT_FALSE(handle);
    EXPECT_EQ(ended, 1);
  }
  EXPECT_EQ(ended, 1);
}

TEST(HandleTest, EndsItsEffectWhenItIsDropped) {
  int ended = 0;
  {
    const Handle handle([&] { ++ended; });
  }
  EXPECT_EQ(ended, 1);
}

TEST(HandleTest, MovesTheEffectAlong) {
  int ended = 0;
  Handle first([&] { ++ended; });
  Handle second(std::move(first));
  EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move)
  first.reset();
  EXPECT_EQ(ended, 0);
  second.reset();
  EXPECT_EQ(ended, 1);
}

TEST(HandleTest, AssignmentEndsTheEffectThatItReplaces) {
  int first = 0;
  int second = 0;
  Handle handle([&] { ++first; });
  handle = Handle([&] { ++second; });
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 0);
  handle = {};
  EXPECT_EQ(second, 1);
}

TEST(HandleTest, AssignedToItselfItKeepsItsEffect) {
  int ended = 0;
  Handle handle([&] { ++ended; });
  auto &same = handle;
  handle = std::move(same);
  EXPECT_TRUE(handle);
  EXPECT_EQ(ended, 0);
}

TEST(HandleTest, MayBeDroppedByItsOwnEnd) {
  auto handle = std::make_unique<Handle>();
  int ended = 0;
  *handle = Handle([&] {
    ++ended;
    handle->reset();
  });
  handle->reset();
  EXPECT_EQ(ended, 1);
}

}  // namespace
}  // namespace lumiwren
