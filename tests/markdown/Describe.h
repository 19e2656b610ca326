#pragma once

#include "markdown/MarkdownBlock.h"
#include "markdown/MarkdownInline.h"

#include <string>
#include <vector>

namespace lumiwren::testing {

/// One line for each block, as in
///   h1(Title)  p(text)  code[json](body)  bullets(a)(b)  numbers(a)(b)  table2(a)(b);(1)(2)
std::string describe(const std::vector<MarkdownBlock> &blocks);

/// The runs one after the other, as in  (plain
/// )E(emphasis)S(strong)K(struck)C(code)ES(both)I(image)(link)<address>
std::string describe(const MarkdownInlineText &text);

}  // namespace lumiwren::testing
