#include "support/FuzzTarget.h"

#include "platform/linux/recognition/PNGDecoder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  const auto bitmap = lumiwren::PNGDecoder().bitmap({{data, data + size}});
  lumiwren::testing::require(
      !bitmap || (bitmap->width > 0 && bitmap->height > 0 &&
                  bitmap->rgb.size() ==
                      static_cast<std::size_t>(bitmap->width) * static_cast<std::size_t>(bitmap->height) * 3),
      "a bitmap has as many bytes as its size says");
  return 0;
}
