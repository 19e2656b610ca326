#include "platform/linux/WholeFile.h"

#include "platform/linux/SystemCalls.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

namespace lumiwren {

namespace {

FileDescriptor open(const std::filesystem::path &path, int flags) {
  return FileDescriptor(checked([&] { return ::open(path.c_str(), flags | O_CLOEXEC); }));
}

struct stat statusOf(const FileDescriptor &file) {
  struct stat status = {};
  checked([&] { return ::fstat(file.get(), &status); });
  return status;
}

FileVersion versionOf(const struct stat &status) {
  return {.device = status.st_dev,
          .inode = status.st_ino,
          .size = status.st_size,
          .seconds = status.st_mtim.tv_sec,
          .nanoseconds = status.st_mtim.tv_nsec};
}

std::filesystem::path folderOf(const std::filesystem::path &file) {
  return file.has_parent_path() ? file.parent_path() : ".";
}

constexpr std::string_view uniquePart = "XXXXXX";  // as mkostemp() wants it

std::string leftoverPrefix(const std::filesystem::path &file) {
  return "." + file.filename().string() + ".";
}

}  // namespace

WholeFile readWhole(const std::filesystem::path &file, const std::optional<FileVersion> &known) {
  // A pipe in the file's place would otherwise be waited for.
  const auto opened = open(file, O_RDONLY | O_NONBLOCK);
  const auto status = statusOf(opened);
  if (!S_ISREG(status.st_mode)) {
    throw std::runtime_error("not a regular file");
  }
  WholeFile whole{.content = {}, .version = versionOf(status)};
  if (whole.version == known) {
    return whole;
  }
  std::array<char, 16384> buffer;
  for (;;) {
    const auto count = checked([&] { return ::read(opened.get(), buffer.data(), buffer.size()); });
    if (count == 0) {
      return whole;
    }
    whole.content.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

void removeLeftovers(const std::filesystem::path &file) {
  const std::string prefix = leftoverPrefix(file);
  std::error_code ignored;
  for (std::filesystem::directory_iterator each(folderOf(file), ignored), end; each != end;
       each.increment(ignored)) {
    const std::string name = each->path().filename().string();
    if (name.starts_with(prefix) && name.size() == prefix.size() + uniquePart.size() &&
        std::filesystem::is_regular_file(each->symlink_status(ignored))) {
      std::filesystem::remove(each->path(), ignored);
    }
  }
}

FileVersion writeWhole(const std::filesystem::path &file, std::string_view content) {
  const auto folder = folderOf(file);
  auto temporary = (folder / (leftoverPrefix(file) + std::string(uniquePart))).string();
  const FileDescriptor opened(
      checked([&] { return ::mkostemp(temporary.data(), O_CLOEXEC); }));  // for the user only
  FileVersion version{};
  try {
    writeAll(opened, content);
    checked([&] { return ::fsync(opened.get()); });
    version = versionOf(statusOf(opened));
    checked([&] { return ::rename(temporary.c_str(), file.c_str()); });
  } catch (const std::system_error &) {
    ::unlink(temporary.c_str());
    throw;
  }
  // Some file systems cannot do this; the new file is in place all the same.
  ::fsync(open(folder, O_RDONLY | O_DIRECTORY).get());
  return version;
}

std::filesystem::path linkTarget(const std::filesystem::path &file) {
  constexpr int mostLinks = 40;  // the kernel's own limit
  auto target = file;
  for (int count = 0; count < mostLinks; ++count) {
    std::error_code notALink;
    const auto next = std::filesystem::read_symlink(target, notALink);
    if (notALink) {
      return target;
    }
    target = folderOf(target) / next;
  }
  return file;
}

void makeFolder(const std::filesystem::path &folder) {
  if (::mkdir(folder.c_str(), S_IRWXU) == 0 || errno == EEXIST) {
    return;
  }
  if (errno != ENOENT || !folder.has_parent_path() || folder.parent_path() == folder) {
    throw std::system_error(errno, std::generic_category());
  }
  makeFolder(folder.parent_path());
  if (::mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
    throw std::system_error(errno, std::generic_category());
  }
}

}  // namespace lumiwren
