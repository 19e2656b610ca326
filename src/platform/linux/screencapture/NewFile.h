#pragma once

#include "base/Bytes.h"
#include "platform/linux/FileDescriptor.h"

#include <cstdint>
#include <filesystem>

namespace lumiwren {

/// A file that comes into being complete or not at all, readable by the user only, and only where nothing is
/// yet: what somebody else has put into its place, a link among it, is neither followed nor replaced.
class NewFile {
public:
  enum class Way : std::uint8_t {
    Unnamed,    // has no name before it is complete; nothing is left of it when this process is killed
    Temporary,  // under another name for a moment, where a file system knows no unnamed files
  };

  /// Finds out whether the file can be made, so that this is known before the user has drawn anything. Throws
  /// std::system_error.
  explicit NewFile(const std::filesystem::path &path, Way way = Way::Unnamed);

  Way way() const { return file_ ? Way::Unnamed : Way::Temporary; }
  /// Writes the file. Once. Throws std::system_error, and then there is no file.
  void complete(const Bytes &content);

private:
  void completeTemporary(const Bytes &content) const;

  std::filesystem::path name_;
  FileDescriptor folder_;
  FileDescriptor file_;
};

}  // namespace lumiwren
