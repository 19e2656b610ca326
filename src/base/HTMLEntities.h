#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace lumiwren {

/// What the named character reference `name` (without "&" and ";") of HTML stands for, in UTF-8; empty when
/// there is none of that name.
std::string_view htmlEntity(std::string_view name);

/// Appends to `out` what the character reference that begins with the "&" at `offset` of `text` stands for,
/// and returns the reference's length, its ";" included. Where none begins, appends nothing and returns 0. A
/// number that names no character stands for U+FFFD.
std::size_t appendCharacterReference(std::string_view text, std::size_t offset, std::string &out);

}  // namespace lumiwren
