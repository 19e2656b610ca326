#pragma once

#include <memory>

namespace lumiwren {

/// A reference that becomes empty when the object it points to ends. Made and read on the object's own
/// thread.
template <typename T>
class Weak {
public:
  Weak() = default;
  T *get() const {
    const auto object = object_.lock();
    return object ? *object : nullptr;
  }

private:
  template <typename>
  friend class WeakAnchor;
  explicit Weak(const std::shared_ptr<T *> &object) : object_(object) {}

  std::weak_ptr<T *> object_;
};

/// A member by which an object hands out weak references to itself; the last member, so that it ends first.
template <typename T>
class WeakAnchor {
public:
  explicit WeakAnchor(T *object) : object_(std::make_shared<T *>(object)) {}
  WeakAnchor(const WeakAnchor &) = delete;
  WeakAnchor &operator=(const WeakAnchor &) = delete;

  Weak<T> weak() const { return Weak<T>(object_); }

private:
  std::shared_ptr<T *> object_;
};

}  // namespace lumiwren
