#pragma once

#include "base/Bytes.h"
#include "platform/linux/x11/capture/RGBImage.h"

namespace lumiwren {

/// The picture as a PNG file. Made for speed: the file is read once and then removed. Throws std::bad_alloc.
Bytes png(const RGBImage &image);

}  // namespace lumiwren
