#pragma once

#include "platform/linux/recognition/GreyImage.h"

#include <stop_token>
#include <vector>

namespace lumiwren {

/// Lines that belong together: a paragraph, a column, a table, a row of buttons. No two of them stand side by
/// side, but for the cells of a table.
struct TextBlock {
  PixelBox box;
  PixelBox sample;  // its longest line
  friend bool operator==(const TextBlock &, const TextBlock &) = default;
};

/// How a picture of ink is laid out.
struct TextLayout {
  std::vector<TextBlock> blocks;  // in reading order
  int letterHeight = 0;           // of most letters, which have neither ascenders nor descenders; pixels
};

/// Takes an ink map (black on white) to pieces: columns are read one after the other, tables row by row.
/// Throws CancellationError when the token is stopped.
TextLayout textLayout(const GreyImage &ink, const std::stop_token &token);

}  // namespace lumiwren
