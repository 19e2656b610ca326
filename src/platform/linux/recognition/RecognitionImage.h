#pragma once

#include "platform/Image.h"
#include "platform/linux/recognition/GreyImage.h"

#include <stop_token>

namespace lumiwren {

/// The picture of a screen as recognition reads it best: dark text on white, large enough. Throws
/// CancellationError when the token is stopped.
GreyImage recognitionImage(const Bitmap &bitmap, const std::stop_token &token);

}  // namespace lumiwren
