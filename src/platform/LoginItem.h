#pragma once

#include <cstdint>

namespace lumiwren {

/// Whether logging in starts this program. Main thread.
class LoginItem {
public:
  enum class Status : std::uint8_t { NotRegistered, Enabled, RequiresApproval, NotFound };

  virtual ~LoginItem() = default;

  virtual Status status() = 0;
  /// Both throw std::exception, whose what() says why, when they fail. What is registered already is
  /// registered anew; to unregister what is not there succeeds.
  virtual void registerItem() = 0;
  virtual void unregisterItem() = 0;
};

}  // namespace lumiwren
