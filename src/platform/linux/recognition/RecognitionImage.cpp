#include "platform/linux/recognition/RecognitionImage.h"

#include "base/Task.h"
#include "platform/linux/recognition/InkMap.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace lumiwren {

GreyImage recognitionImage(const Bitmap &bitmap, const std::stop_token &token) {
  const int w = bitmap.width, h = bitmap.height;
  const auto luma = inkMap(bitmap, token).pixels;
  throwIfStopped(token);
  const int scale = std::max(w, h) > 16000 ? 1 : 2;
  const int border = 10;
  GreyImage out;
  out.width = w * scale + 2 * border;
  out.height = h * scale + 2 * border;
  out.resolution = 192;
  out.pixels.assign(static_cast<std::size_t>(out.width) * static_cast<std::size_t>(out.height), 255);
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
  if (getenv("DUMP")) {
    FILE *f = fopen(getenv("DUMP"), "wb");
    fprintf(f, "P5 %d %d 255\n", out.width, out.height);
    fwrite(out.pixels.data(), 1, out.pixels.size(), f);
    fclose(f);
  }
  return out;
}

}  // namespace lumiwren
