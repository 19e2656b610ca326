#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

/// Gives `data` to what is tested, and ends the process where the result is inconsistent. libFuzzer calls it
/// by this name; each program that links one has its own.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace lumiwren::testing {

/// Ends the process unless the rule holds.
inline void require(bool holds, const char *rule) {
  if (!holds) {
    std::fprintf(stderr, "does not hold: %s\n", rule);
    std::abort();
  }
}

}  // namespace lumiwren::testing
