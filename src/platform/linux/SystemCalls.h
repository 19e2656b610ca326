#pragma once

#include "platform/linux/FileDescriptor.h"

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string_view>
#include <system_error>

namespace lumiwren {

/// What a system call answers, which is repeated when a signal interrupts it. Throws std::system_error when
/// it fails.
template <typename Call>
auto checked(Call call) {
  for (;;) {
    if (const auto answer = call(); answer >= 0) {
      return answer;
    }
    if (errno != EINTR) {
      throw std::system_error(errno, std::generic_category());
    }
  }
}

/// Throws std::system_error.
inline void writeAll(const FileDescriptor &file, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto count = checked([&] { return ::write(file.get(), bytes.data(), bytes.size()); });
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace lumiwren
