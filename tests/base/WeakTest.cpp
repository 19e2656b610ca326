#include "base/Weak.h"

#include <gtest/gtest.h>

#include <memory>

namespace lumiwren {
namespace {

struct Object {
  int value = 7;
  WeakAnchor<Object> anchor{this};
};

TEST(WeakTest, PointsToNothingAtFirst) {
  EXPECT_EQ(Weak<Object>().get(), nullptr);
}

TEST(WeakTest, PointsToItsObjectForAsLongAsThatLives) {
  auto object = std::make_unique<Object>();
  const auto weak = object->anchor.weak();
  const auto copy = weak;
  EXPECT_EQ(weak.get(), object.get());
  EXPECT_EQ(copy.get()->value, 7);
  object.reset();
  EXPECT_EQ(weak.get(), nullptr);
  EXPECT_EQ(copy.get(), nullptr);
}

}  // namespace
}  // namespace lumiwren
