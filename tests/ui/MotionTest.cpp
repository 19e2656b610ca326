#include "ui/Motion.h"

#include <gtest/gtest.h>

#include <vector>

namespace lumiwren {
namespace {

TEST(Motion, ObserversAreToldOfChangesOnly) {
  std::vector<bool> seen;
  auto handle = observeReducesMotion([&seen] { seen.push_back(reducesMotion()); });
  EXPECT_FALSE(reducesMotion());
  setReducesMotion(false);
  setReducesMotion(true);
  setReducesMotion(true);
  setReducesMotion(false);
  EXPECT_EQ(seen, (std::vector<bool>{true, false}));
  handle.reset();
  setReducesMotion(true);
  setReducesMotion(false);
  EXPECT_EQ(seen.size(), 2U);
}

}  // namespace
}  // namespace lumiwren
