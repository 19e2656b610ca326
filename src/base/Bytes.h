#pragma once

#include <cstdint>
#include <vector>

namespace lumiwren {

using Bytes = std::vector<std::uint8_t>;

}  // namespace lumiwren
