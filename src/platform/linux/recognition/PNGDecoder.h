#pragma once

#include "platform/Image.h"

#include <cstdint>

namespace lumiwren {

/// Decodes PNG files of every form. Keeps no state.
class PNGDecoder : public ImageDecoder {
public:
  /// Some desktops are this wide with several screens side by side, none has more pixels: 8K is 33 million.
  static constexpr std::uint32_t maximumSide = 32'768;
  static constexpr std::uint64_t maximumPixels = 64'000'000;

  std::optional<Bitmap> bitmap(const Image &image) override;
};

}  // namespace lumiwren
