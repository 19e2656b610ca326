#include "base/Secret.h"

#include <cstring>

namespace lumiwren {

void wipe(std::string &text) noexcept {
  text.resize(text.capacity());  // Within the capacity: does not allocate.
  explicit_bzero(text.data(), text.size());
  text.clear();
}

Secret::Secret(std::string &&text) : text_(text) {
  wipe(text);
}

Secret Secret::copyOf(std::string_view text) {
  return Secret(std::string(text));
}

Secret::Secret(Secret &&other) noexcept : text_(std::move(other.text_)) {
  wipe(other.text_);  // A short text is copied by a move, not handed over.
}

Secret &Secret::operator=(const Secret &other) {
  if (this != &other) {
    wipe(text_);
    text_ = other.text_;
  }
  return *this;
}

Secret &Secret::operator=(Secret &&other) noexcept {
  if (this != &other) {
    wipe(text_);
    text_ = std::move(other.text_);
    wipe(other.text_);
  }
  return *this;
}

Secret::~Secret() {
  wipe(text_);
}

}  // namespace lumiwren
