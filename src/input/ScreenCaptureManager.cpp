#include "input/ScreenCaptureManager.h"

#include "base/UUID.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <fstream>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

namespace lumiwren {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view namePrefix = "glintnote_capture_";
constexpr std::string_view nameSuffix = ".png";
constexpr std::array<std::uint8_t, 8> pngSignature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};

/// The path of one capture, and whatever file is there until this ends.
class CaptureFile {
public:
  explicit CaptureFile(const fs::path &folder)
      : path_(folder / std::string(namePrefix).append(UUID::random().toString()).append(nameSuffix)) {}
  CaptureFile(const CaptureFile &) = delete;
  CaptureFile &operator=(const CaptureFile &) = delete;
  ~CaptureFile() { remove(); }

  const fs::path &path() const { return path_; }
  /// Empty when there is no file, or none that is a picture.
  std::optional<Image> load() const {
    std::ifstream file(path_, std::ios::binary | std::ios::ate);
    const auto size = file ? static_cast<std::streamoff>(file.tellg()) : 0;
    if (size < static_cast<std::streamoff>(pngSignature.size())) {
      return std::nullopt;
    }
    Image image{Bytes(static_cast<std::size_t>(size))};
    file.seekg(0);
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the stream's bytes are characters.
    if (!file.read(reinterpret_cast<char *>(image.file.data()), size) ||
        !std::equal(pngSignature.begin(), pngSignature.end(), image.file.begin())) {
      return std::nullopt;
    }
    return image;
  }
  void remove() const {
    std::error_code ignored;
    fs::remove(path_, ignored);
  }

private:
  const fs::path path_;
};

bool isCaptureName(std::string_view name) {
  if (!name.starts_with(namePrefix) || !name.ends_with(nameSuffix)) {
    return false;
  }
  name.remove_prefix(namePrefix.size());
  name.remove_suffix(nameSuffix.size());
  return UUID::parse(name).has_value();
}

bool isOwnFile(const fs::path &path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid();
}

void removeCaptures(const fs::path &folder, fs::file_time_type before, const std::stop_token &token) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end && !token.stop_requested();
       entry.increment(error)) {
    std::error_code ignored;
    const fs::path &path = entry->path();
    if (isCaptureName(path.filename().native()) && isOwnFile(path) &&
        fs::last_write_time(path, ignored) < before) {
      fs::remove(path, ignored);
    }
  }
}

}  // namespace

ScreenCaptureManager::ScreenCaptureManager(ScreenRecording &screenRecording, ChildProcesses &processes,
                                           Workspace &workspace, MainQueue &mainQueue, fs::path folder)
    : screenRecording_(screenRecording),
      processes_(processes),
      workspace_(workspace),
      mainQueue_(mainQueue),
      folder_(std::move(folder)) {}

void ScreenCaptureManager::captureRegion(const Completion &completion) {
  // Held by what waits for the tool: a quit in between drops both, and the file with them.
  const auto file = std::make_shared<CaptureFile>(folder_);
  const bool isRunning = processes_.launch(screenRecording_.tool(), {"-i", "-s", file->path().string()},
                                           [&mainQueue = mainQueue_, file, completion] {
                                             mainQueue.post([file, completion] {
                                               auto image = file->load();
                                               file->remove();
                                               completion(std::move(image), std::nullopt);
                                             });
                                           });
  if (!isRunning) {
    completion(std::nullopt, std::nullopt);
  }
}

bool ScreenCaptureManager::requestScreenRecordingPermission() {
  return workspace_.openURL("x-apple.systempreferences:com.apple.preference.security?Privacy_ScreenCapture");
}

Task ScreenCaptureManager::removeStaleCaptures() const {
  return Task::start([folder = folder_, before = begin_](const std::stop_token &token) {
    removeCaptures(folder, before, token);
  });
}

}  // namespace lumiwren
