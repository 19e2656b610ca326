#pragma once

#include <cstdlib>
#include <memory>

namespace lumiwren {

struct FreeReply {
  void operator()(void *reply) const noexcept { std::free(reply); }
};

/// What xcb hands over: replies and events. Empty where the server answered with an error, or is gone.
template <typename T>
using XReply = std::unique_ptr<T, FreeReply>;

}  // namespace lumiwren
