#pragma once

#include <string>

namespace lumiwren {

/// The outcome of a connection test.
struct TestResult {
  enum class Case { Success, Failure };

  Case outcome;
  std::string message;  // of a failure

  friend bool operator==(const TestResult &, const TestResult &) = default;
};

}  // namespace lumiwren
