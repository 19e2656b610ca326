#include "platform/linux/screencapture/NewFile.h"

#include "platform/linux/SystemCalls.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <system_error>

namespace lumiwren {
namespace {

constexpr mode_t userOnly = S_IRUSR | S_IWUSR;

[[noreturn]] void fail(int error) {
  throw std::system_error(error, std::generic_category());
}

void writePrivately(const FileDescriptor &file, const Bytes &content) {
  // Whatever the umask has left of the mode.
  checked([&] { return fchmod(file.get(), userOnly); });
  writeAll(file, {reinterpret_cast<const char *>(content.data()), content.size()});
}

/// Holds back the signals that end this process.
class WithoutSignals {
public:
  WithoutSignals() {
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, &before_);
  }
  WithoutSignals(const WithoutSignals &) = delete;
  WithoutSignals &operator=(const WithoutSignals &) = delete;
  ~WithoutSignals() { sigprocmask(SIG_SETMASK, &before_, nullptr); }

private:
  sigset_t before_{};
};

}  // namespace

NewFile::NewFile(const std::filesystem::path &path, Way way) : name_(path.filename()) {
  if (name_.empty()) {
    fail(path.empty() ? ENOENT : EISDIR);
  }
  const auto parent = path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
  folder_ = FileDescriptor(checked([&] { return open(parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC); }));
  struct stat existing = {};
  if (fstatat(folder_.get(), name_.c_str(), &existing, AT_SYMLINK_NOFOLLOW) == 0) {
    fail(EEXIST);
  }
  if (way == Way::Unnamed) {
    file_ = FileDescriptor(openat(folder_.get(), ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, userOnly));
    // A kernel or a file system that does not know the flag takes it for the opening of a folder.
    if (!file_ && errno != EOPNOTSUPP && errno != EISDIR) {
      fail(errno);
    }
  }
  if (!file_) {
    checked([this] { return faccessat(folder_.get(), ".", W_OK | X_OK, AT_EACCESS); });
  }
}

void NewFile::complete(const Bytes &content) {
  if (!file_) {
    completeTemporary(content);
    return;
  }
  writePrivately(file_, content);
  const std::string opened = "/proc/self/fd/" + std::to_string(file_.get());
  checked([&] { return linkat(AT_FDCWD, opened.c_str(), folder_.get(), name_.c_str(), AT_SYMLINK_FOLLOW); });
}

void NewFile::completeTemporary(const Bytes &content) const {
  const WithoutSignals untilItIsGone;
  const std::string temporary = name_.string() + "." + std::to_string(getpid());
  const FileDescriptor file(checked([&] {
    return openat(folder_.get(), temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, userOnly);
  }));
  int error = 0;
  try {
    writePrivately(file, content);
    checked([&] { return linkat(folder_.get(), temporary.c_str(), folder_.get(), name_.c_str(), 0); });
  } catch (const std::system_error &failure) {
    error = failure.code().value();
  }
  unlinkat(folder_.get(), temporary.c_str(), 0);
  if (error != 0) {
    fail(error);
  }
}

}  // namespace lumiwren
