#include "platform/recognition/FuzzTarget.h"

#include "platform/linux/recognition/PNGDecoder.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  const auto bitmap = lumiwren::PNGDecoder().bitmap({{data, data + size}});
  if (bitmap && (bitmap->width <= 0 || bitmap->height <= 0 ||
                 bitmap->rgb.size() != static_cast<std::size_t>(bitmap->width) *
                                           static_cast<std::size_t>(bitmap->height) * 3)) {
    std::fputs("a bitmap has as many bytes as its size says\n", stderr);
    std::abort();
  }
  return 0;
}
