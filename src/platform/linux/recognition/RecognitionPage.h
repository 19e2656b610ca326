#pragma once

#include "platform/Image.h"
#include "platform/linux/recognition/GreyImage.h"
#include "platform/linux/recognition/TextBlocks.h"

#include <stop_token>
#include <vector>

namespace lumiwren {

/// A picture of a screen as recognition reads it best.
struct RecognitionPage {
  GreyImage image;                // dark text on light ground, large enough, with a margin
  std::vector<TextBlock> blocks;  // places in `image`, in reading order
  bool isLaidOut = false;         // else the one block is everything, of which nothing is known
};

/// Throws CancellationError when the token is stopped.
RecognitionPage recognitionPage(const Bitmap &bitmap, const std::stop_token &token);

}  // namespace lumiwren
