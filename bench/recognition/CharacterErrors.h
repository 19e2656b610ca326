#pragma once

#include <string>

namespace lumiwren::bench {

/// How wrong a reading is: the characters that must be changed, inserted or removed to make it right, for
/// each that it should have. What separates words counts as one space, whatever it is.
double characterErrorRate(const std::u32string &expected, const std::u32string &read);

}  // namespace lumiwren::bench
