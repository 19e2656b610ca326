#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lumiwren {

/// The standard alphabet with padding (RFC 4648, section 4), without line breaks.
std::string encodeBase64(std::string_view bytes);
/// Reads exactly what encodeBase64 writes; empty for everything else.
std::optional<std::string> decodeBase64(std::string_view text);

}  // namespace lumiwren
