#include "platform/linux/updates/PrivateFolder.h"

#include "platform/linux/WholeFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace lumiwren {
namespace {

template <typename Answer>
Answer checked(Answer answer) {
  if (answer < 0) {
    throw std::system_error(errno, std::generic_category());
  }
  return answer;
}

}  // namespace

PrivateFile::PrivateFile(std::filesystem::path path)
    : path_(std::move(path)),
      file_(checked(::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR))) {}

PrivateFile::~PrivateFile() {
  if (!isKept_) {
    ::unlink(path_.c_str());
    ::rmdir(path_.parent_path().c_str());
  }
}

void PrivateFile::write(std::string_view bytes) {
  while (!bytes.empty()) {
    const auto count = ::write(file_.get(), bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) {
      continue;
    }
    bytes.remove_prefix(static_cast<std::size_t>(checked(count)));
  }
}

std::unique_ptr<PrivateFile> PrivateFolder::makeFile(const std::string &name) const {
  makeFolder(path_);
  // A link in the folder's place may lead to where others can write.
  const FileDescriptor folder(
      checked(::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)));
  checked(::fchmod(folder.get(), S_IRWXU));
  auto own = (path_ / "XXXXXX").string();
  if (::mkdtemp(own.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category());
  }
  try {
    return std::unique_ptr<PrivateFile>(new PrivateFile(std::filesystem::path(own) / name));
  } catch (const std::system_error &) {
    ::rmdir(own.c_str());
    throw;
  }
}

void PrivateFolder::clear() const {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

MappedFile::MappedFile(const std::filesystem::path &path) {
  const FileDescriptor file(checked(::open(path.c_str(), O_RDONLY | O_CLOEXEC)));
  struct stat status = {};
  checked(::fstat(file.get(), &status));
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
