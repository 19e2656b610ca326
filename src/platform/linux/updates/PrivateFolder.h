#pragma once

#include "platform/linux/FileDescriptor.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace lumiwren {

/// A new file that nobody else can read or exchange; removed with this object unless it is kept. One thread
/// at a time.
class PrivateFile {
public:
  PrivateFile(const PrivateFile &) = delete;
  PrivateFile &operator=(const PrivateFile &) = delete;
  ~PrivateFile();

  const std::filesystem::path &path() const { return path_; }
  /// Appends. Throws std::system_error.
  void write(std::string_view bytes);
  /// The file stays when this object ends.
  void keep() { isKept_ = true; }

private:
  friend class PrivateFolder;
  PrivateFile(std::filesystem::path path, FileDescriptor folder);

  const std::filesystem::path path_;
  const FileDescriptor folder_;  // its own, locked
  FileDescriptor file_;
  bool isKept_ = false;
};

/// Where files wait that only this user, and what runs for this user, may touch. Any thread.
class PrivateFolder {
public:
  explicit PrivateFolder(std::filesystem::path path) : path_(std::move(path)) {}

  /// An empty file of that name, in a new folder of its own. Throws std::system_error, also where somebody
  /// else's folder stands in the way.
  std::unique_ptr<PrivateFile> makeFile(const std::string &name) const;
  /// Removes whatever was kept, or left behind by a program that was killed; not what another program, in
  /// another session of the user, is at work on.
  void clear() const;

private:
  const std::filesystem::path path_;
};

/// The bytes of a file, without reading it into memory. Throws std::system_error. The file is not to be
/// shortened meanwhile.
class MappedFile {
public:
  explicit MappedFile(const std::filesystem::path &path);
  MappedFile(const MappedFile &) = delete;
  MappedFile &operator=(const MappedFile &) = delete;
  ~MappedFile();

  std::string_view bytes() const { return {static_cast<const char *>(start_), size_}; }

private:
  void *start_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace lumiwren
