#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>

namespace lumiwren::testing {

/// An application (QCoreApplication or one that is more) for as long as tests run.
template <typename Application>
class ApplicationEnvironment : public ::testing::Environment {
public:
  void SetUp() override { application_.emplace(argc_, argv_); }
  void TearDown() override { application_.reset(); }

  static ::testing::Environment *add() {
    return ::testing::AddGlobalTestEnvironment(std::make_unique<ApplicationEnvironment>().release());
  }

private:
  int argc_ = 1;
  char name_[5] = "test";
  char *argv_[2] = {name_, nullptr};
  std::optional<Application> application_;
};

}  // namespace lumiwren::testing
