#include "platform/linux/recognition/TesseractRecognizer.h"

#include "base/Memory.h"
#include "base/Task.h"
#include "platform/linux/recognition/LanguageReader.h"
#include "platform/linux/recognition/RecognitionPage.h"

#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <utility>

namespace lumiwren {
namespace {

/// A picture that waits to be read, and what it says in the end.
struct Job {
  Job(RecognitionPage readPage, std::stop_token callersToken)
      : page(std::move(readPage)), token(std::move(callersToken)) {}

  const RecognitionPage page;
  const std::stop_token token;  // the caller's
  std::vector<TextObservation> observations;
  // Not an exception, which two threads would own.
  std::optional<std::string> failure;
  bool isCancelled = false;  // by the engine's thread
  bool isDone = false;
};

}  // namespace

/// Between callers, who may have left, and the engine's thread, which may outlive the recognizer.
struct TesseractRecognizer::Shared {
  explicit Shared(Options given) : options(std::move(given)) {}

  const Options options;
  std::mutex mutex;
  std::condition_variable_any changed;
  bool isRunning = false;  // the engine's thread
  bool isWanted = false;   // since the thread last looked
  std::deque<std::shared_ptr<Job>> jobs;
  Task thread;

  /// Sees that the engine is being loaded, or stays.
  static void want(const std::shared_ptr<Shared> &shared) {
    shared->isWanted = true;
    if (!shared->isRunning) {
      shared->isRunning = true;
      shared->thread = Task::start([shared](const std::stop_token &token) { shared->run(token); });
    }
    shared->changed.notify_all();
  }

  void run(const std::stop_token &token) {
    bool again = true;
    while (again) {
      std::optional<std::string> failure;
      try {
        LanguageReader reader(options.library, options.dataFolders);
        serve(reader, token);
      } catch (const std::exception &error) {
        failure = error.what();
      }
      releaseFreedMemory();
      again = settle(failure, token);
    }
  }

private:
  /// Reads until nothing has been wanted for a while.
  void serve(LanguageReader &reader, const std::stop_token &token) {
    std::unique_lock lock(mutex);
    for (;;) {
      if (!changed.wait_for(lock, token, options.keepWarm, [this] { return isWanted; })) {
        return;
      }
      isWanted = false;
      while (!jobs.empty()) {
        const auto job = jobs.front();
        jobs.pop_front();
        lock.unlock();
        read(reader, *job, token);
        lock.lock();
        job->isDone = true;
        changed.notify_all();
      }
    }
  }

  static void read(LanguageReader &reader, Job &job, const std::stop_token &token) {
    try {
      for (auto &line :
           reader.read(job.page, [&] { return job.token.stop_requested() || token.stop_requested(); })) {
        job.observations.push_back({std::move(line.text)});
      }
    } catch (const CancellationError &) {
      job.isCancelled = true;
    } catch (const std::exception &error) {
      job.failure = error.what();
    }
  }

  /// After the engine has been let go of. False when the thread may end.
  bool settle(const std::optional<std::string> &failure, const std::stop_token &token) {
    const std::lock_guard lock(mutex);
    if (failure || token.stop_requested()) {
      for (const auto &job : jobs) {
        job->failure = failure;
        job->isCancelled = !failure;
        job->isDone = true;
      }
      jobs.clear();
      isWanted = false;
    }
    isRunning = isWanted;
    changed.notify_all();
    return isRunning;
  }
};

TesseractRecognizer::TesseractRecognizer() : TesseractRecognizer(Options()) {}

TesseractRecognizer::TesseractRecognizer(Options options)
    : shared_(std::make_shared<Shared>(std::move(options))) {}

TesseractRecognizer::~TesseractRecognizer() {
  const std::lock_guard lock(shared_->mutex);
  shared_->thread.cancel();
}

void TesseractRecognizer::prepare() {
  const std::lock_guard lock(shared_->mutex);
  Shared::want(shared_);
}

std::vector<TextObservation> TesseractRecognizer::recognize(const Bitmap &bitmap,
                                                            const std::stop_token &token) {
  throwIfStopped(token);
  prepare();
  auto page = recognitionPage(bitmap, token);
  const auto job = std::make_shared<Job>(std::move(page), token);
  std::unique_lock lock(shared_->mutex);
  shared_->jobs.push_back(job);
  Shared::want(shared_);
  shared_->changed.wait(lock, token, [&] { return job->isDone; });
  throwIfStopped(token);
  if (job->isCancelled) {
    throw CancellationError();
  }
  if (job->failure) {
    throw TextRecognitionError(*job->failure);
  }
  return std::move(job->observations);
}

bool TesseractRecognizer::isLoaded() const {
  const std::lock_guard lock(shared_->mutex);
  return shared_->isRunning;
}

std::vector<std::filesystem::path> TesseractRecognizer::languageDataFolders() {
  std::vector<std::filesystem::path> folders;
  if (const char *const prefix = std::getenv("TESSDATA_PREFIX"); prefix != nullptr && *prefix != '\0') {
    folders.emplace_back(prefix);
    folders.emplace_back(folders.front() / "tessdata");
  }
  folders.insert(folders.end(), {"/usr/share/tesseract-ocr/5/tessdata", "/usr/share/tessdata",
                                 "/usr/share/tesseract/tessdata", "/usr/local/share/tessdata"});
  return folders;
}

}  // namespace lumiwren
