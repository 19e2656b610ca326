#pragma once

#include "platform/Pasteboard.h"

#include <optional>
#include <string>
#include <string_view>

namespace lumiwren {

/// The text that a property of the type `encoding` holds, as valid UTF-8; empty for an encoding that is none
/// of text. What is no text in a UTF-8 property becomes U+FFFD.
std::optional<std::string> decodeSelectionText(std::string_view encoding, const Bytes &bytes);

/// A text under every name that plain text goes by. STRING is Latin-1; what it cannot hold is "?" there.
PasteboardContents plainTextContents(std::string_view text);

}  // namespace lumiwren
