#pragma once

#include <cstddef>
#include <cstdint>

/// Reads `data` as a feed, and ends the process where the result is inconsistent. libFuzzer calls it by this
/// name.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
