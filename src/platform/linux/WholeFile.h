#pragma once

#include <sys/types.h>

#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace lumiwren {

/// What tells one version of a file from another.
struct FileVersion {
  dev_t device;
  ino_t inode;
  off_t size;
  time_t seconds;
  long nanoseconds;
  friend bool operator==(const FileVersion &, const FileVersion &) = default;
};

struct WholeFile {
  std::string content;
  FileVersion version;
};

/// A regular file's content, left out while it still is the version that is `known`. Throws
/// std::system_error, or std::runtime_error when it is no regular file.
WholeFile readWhole(const std::filesystem::path &file, const std::optional<FileVersion> &known);

/// Writes a new file, readable by the user only, and lets it take the place of `file`, which is replaced
/// whole or not at all; on disk when this returns. Throws std::system_error and then leaves what was there. A
/// link is replaced, not followed: see linkTarget().
FileVersion writeWhole(const std::filesystem::path &file, std::string_view content);

/// Removes what a process that was killed while it wrote `file` has left beside it. Nobody may be writing it.
void removeLeftovers(const std::filesystem::path &file);

/// Where a symbolic link leads in the end, whether or not something is there; `file` itself when it is no
/// link or its links go in circles.
std::filesystem::path linkTarget(const std::filesystem::path &file);

/// Makes the folder and those above it that are missing, for the user only. Throws std::system_error.
void makeFolder(const std::filesystem::path &folder);

}  // namespace lumiwren
