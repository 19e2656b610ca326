#pragma once

#include <cstddef>
#include <string>

namespace lumiwren::bench {

/// A text of `size` bytes like those that chat models answer with: headings, paragraphs with emphasis, code
/// and links, lists, tables, code blocks. The same for the same size everywhere; in UTF-8, mostly ASCII.
std::string chatAnswer(std::size_t size);

}  // namespace lumiwren::bench
