#pragma once

#include "platform/Image.h"
#include "platform/linux/recognition/GreyImage.h"

#include <optional>
#include <stop_token>

namespace lumiwren {

/// What is written on a screen, in black on white, whatever colours it has: each pixel's distance from the
/// colour of the ground around it. Frames and rules are left out. Empty when there is no ground to speak of,
/// as in photographs. Throws CancellationError when the token is stopped.
std::optional<GreyImage> inkMap(const Bitmap &bitmap, const std::stop_token &token);

}  // namespace lumiwren
