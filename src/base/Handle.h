#pragma once

#include <functional>
#include <utility>

namespace lumiwren {

/// Stands for an effect (a registration, an installed monitor) that ends with this object.
class [[nodiscard]] Handle {
public:
  Handle() noexcept = default;
  explicit Handle(std::function<void()> end) : end_(std::move(end)) {}
  Handle(Handle &&other) noexcept : end_(std::exchange(other.end_, nullptr)) {}
  Handle &operator=(Handle &&other) noexcept {
    if (this != &other) {
      reset();
      end_ = std::exchange(other.end_, nullptr);
    }
    return *this;
  }
  Handle(const Handle &) = delete;
  Handle &operator=(const Handle &) = delete;
  ~Handle() { reset(); }

  void reset() {
    if (const auto end = std::exchange(end_, nullptr)) {
      end();
    }
  }
  explicit operator bool() const noexcept { return static_cast<bool>(end_); }

private:
  std::function<void()> end_;
};

}  // namespace lumiwren
