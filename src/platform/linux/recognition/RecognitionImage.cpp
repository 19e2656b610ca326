#include "platform/linux/recognition/RecognitionImage.h"

#include "base/Task.h"

#include <algorithm>
#include <array>

namespace lumiwren {

GreyImage recognitionImage(const Bitmap &bitmap, const std::stop_token &token) {
  const int w = bitmap.width, h = bitmap.height;
  std::vector<std::uint8_t> luma(static_cast<std::size_t>(w) * static_cast<std::size_t>(h));
  std::array<std::size_t, 256> histogram{};
  for (std::size_t i = 0; i < luma.size(); ++i) {
    luma[i] = static_cast<std::uint8_t>(
        (bitmap.rgb[3 * i] * 77 + bitmap.rgb[3 * i + 1] * 150 + bitmap.rgb[3 * i + 2] * 29) >> 8);
    ++histogram[luma[i]];
  }
  const bool dark = std::max_element(histogram.begin(), histogram.end()) - histogram.begin() < 128;
  if (dark) {
    for (auto &v : luma)
      v = static_cast<std::uint8_t>(255 - v);
  }
  throwIfStopped(token);
  const int scale = std::max(w, h) > 16000 ? 1 : 2;
  const int border = 10;
  GreyImage out;
  out.width = w * scale + 2 * border;
  out.height = h * scale + 2 * border;
  out.resolution = 192;
  const auto mode =
      static_cast<std::uint8_t>(std::max_element(histogram.begin(), histogram.end()) - histogram.begin());
  out.pixels.assign(static_cast<std::size_t>(out.width) * static_cast<std::size_t>(out.height),
                    dark ? static_cast<std::uint8_t>(255 - mode) : mode);
  for (int y = 0; y < h * scale; ++y) {
    const int sy = std::clamp((2 * y + 1 - scale) * 128 / scale, 0, (h - 1) * 256);
    const int y0 = sy >> 8, fy = sy & 255, y1 = std::min(y0 + 1, h - 1);
    for (int x = 0; x < w * scale; ++x) {
      const int sx = std::clamp((2 * x + 1 - scale) * 128 / scale, 0, (w - 1) * 256);
      const int x0 = sx >> 8, fx = sx & 255, x1 = std::min(x0 + 1, w - 1);
      const auto at = [&](int xx, int yy) {
        return int(
            luma[static_cast<std::size_t>(yy) * static_cast<std::size_t>(w) + static_cast<std::size_t>(xx)]);
      };
      const int top = at(x0, y0) * (256 - fx) + at(x1, y0) * fx;
      const int bottom = at(x0, y1) * (256 - fx) + at(x1, y1) * fx;
      out.pixels[static_cast<std::size_t>(y + border) * static_cast<std::size_t>(out.width) +
                 static_cast<std::size_t>(x + border)] =
          static_cast<std::uint8_t>((top * (256 - fy) + bottom * fy) >> 16);
    }
  }
  return out;
}

}  // namespace lumiwren
