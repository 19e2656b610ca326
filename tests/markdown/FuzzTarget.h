#pragma once

#include <cstddef>
#include <cstdint>

/// Parses `data` as an answer and interprets its lines, and ends the process where the results are
/// inconsistent. libFuzzer calls it by this name.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
