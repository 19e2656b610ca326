#include "platform/linux/updates/PrivateFolder.h"

#include "platform/linux/SystemCalls.h"
#include "platform/linux/WholeFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace lumiwren {
namespace {

/// Empty where there is no folder. A link in its place may lead to where others can write.
FileDescriptor openFolder(const std::filesystem::path &path) {
  return FileDescriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

/// Throws std::system_error where it is none.
FileDescriptor lockedFolder(const std::filesystem::path &path, int operation) {
  FileDescriptor folder = openFolder(path);
  if (!folder) {
    throw std::system_error(errno, std::generic_category());
  }
  checked([&] { return ::flock(folder.get(), operation); });
  return folder;
}

/// Whether nobody else has it; then it is locked until it is closed.
bool tryToLock(const FileDescriptor &folder) {
  return ::flock(folder.get(), LOCK_EX | LOCK_NB) == 0;
}

}  // namespace

PrivateFile::PrivateFile(std::filesystem::path path, FileDescriptor folder)
    : path_(std::move(path)), folder_(std::move(folder)), file_(checked([this] {
        return ::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
      })) {}

PrivateFile::~PrivateFile() {
  if (!isKept_) {
    ::unlink(path_.c_str());
    ::rmdir(path_.parent_path().c_str());
  }
}

void PrivateFile::write(std::string_view bytes) {
  writeAll(file_, bytes);
}

std::unique_ptr<PrivateFile> PrivateFolder::makeFile(const std::string &name) const {
  makeFolder(path_);
  const FileDescriptor folder = lockedFolder(path_, LOCK_SH);  // Nobody clears it meanwhile.
  checked([&] { return ::fchmod(folder.get(), S_IRWXU); });
  auto own = (path_ / "XXXXXX").string();
  if (::mkdtemp(own.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category());
  }
  try {
    return std::unique_ptr<PrivateFile>(
        new PrivateFile(std::filesystem::path(own) / name, lockedFolder(own, LOCK_EX)));
  } catch (const std::system_error &) {
    ::rmdir(own.c_str());
    throw;
  }
}

void PrivateFolder::clear() const {
  std::error_code ignored;
  const FileDescriptor folder = openFolder(path_);
  if (!folder) {
    std::filesystem::remove(path_, ignored);  // A link, or nothing.
    return;
  }
  if (!tryToLock(folder)) {
    return;  // Another session's program makes a file in it, and cleared it when it started.
  }
  for (const auto &entry : std::filesystem::directory_iterator(path_, ignored)) {
    const FileDescriptor own = openFolder(entry.path());
    if (!own || tryToLock(own)) {
      std::filesystem::remove_all(entry.path(), ignored);
    }
  }
}

MappedFile::MappedFile(const std::filesystem::path &path) {
  const FileDescriptor file(checked([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC); }));
  struct stat status = {};
  checked([&] { return ::fstat(file.get(), &status); });
  size_ = static_cast<std::size_t>(status.st_size);
  if (size_ == 0) {
    return;
  }
  void *const start = ::mmap(nullptr, size_, PROT_READ, MAP_PRIVATE, file.get(), 0);
  if (start == MAP_FAILED) {
    throw std::system_error(errno, std::generic_category());
  }
  start_ = start;
}

MappedFile::~MappedFile() {
  if (start_ != nullptr) {
    ::munmap(start_, size_);
  }
}

}  // namespace lumiwren
