#pragma once

#include "base/Task.h"
#include "support/Process.h"

#include <gtest/gtest.h>

namespace lumiwren::testing {

/// Ends every task before anything that was declared earlier goes.
struct EndsTasks {
  EndsTasks() = default;
  EndsTasks(const EndsTasks &) = delete;
  EndsTasks &operator=(const EndsTasks &) = delete;
  ~EndsTasks() { EXPECT_TRUE(Task::endAll(patience)); }
};

}  // namespace lumiwren::testing
