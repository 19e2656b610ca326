#pragma once

#include "platform/Image.h"

#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace lumiwren::testing {

/// A decoder that shows the same pixels for every picture, whatever its file has. Any thread.
class FakeImageDecoder : public ImageDecoder {
public:
  std::optional<Bitmap> bitmap(const Image &image) override {
    const std::lock_guard lock(mutex_);
    images_.push_back(image);
    return bitmap_;
  }

  /// What every picture shows from now on; empty for pictures that nobody can decode. At first one white
  /// pixel.
  void show(std::optional<Bitmap> bitmap) {
    const std::lock_guard lock(mutex_);
    bitmap_ = std::move(bitmap);
  }

  /// The pictures that were decoded, in order.
  std::vector<Image> images() const {
    const std::lock_guard lock(mutex_);
    return images_;
  }

private:
  mutable std::mutex mutex_;
  std::optional<Bitmap> bitmap_ = Bitmap{1, 1, {255, 255, 255}};
  std::vector<Image> images_;
};

}  // namespace lumiwren::testing
