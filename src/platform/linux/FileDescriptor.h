#pragma once

#include <unistd.h>

#include <utility>

namespace lumiwren {

/// Owns an open file descriptor.
class FileDescriptor {
public:
  FileDescriptor() noexcept = default;
  explicit FileDescriptor(int number) noexcept : number_(number) {}
  FileDescriptor(FileDescriptor &&other) noexcept : number_(std::exchange(other.number_, -1)) {}
  FileDescriptor &operator=(FileDescriptor &&other) noexcept {
    if (this != &other) {
      reset();
      number_ = std::exchange(other.number_, -1);
    }
    return *this;
  }
  FileDescriptor(const FileDescriptor &) = delete;
  FileDescriptor &operator=(const FileDescriptor &) = delete;
  ~FileDescriptor() { reset(); }

  int get() const noexcept { return number_; }
  explicit operator bool() const noexcept { return number_ >= 0; }
  void reset() noexcept {
    if (number_ >= 0) {
      close(std::exchange(number_, -1));
    }
  }

private:
  int number_ = -1;
};

}  // namespace lumiwren
