#pragma once

#include "base/Task.h"
#include "platform/Pasteboard.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumiwren::testing {

/// A pasteboard in memory. Any thread, as the real one. Tests play the other applications: they put contents
/// there, say what the next copy puts there, and read what the program under test has put there.
class FakePasteboard : public Pasteboard {
public:
  struct Put {
    PasteboardContents contents;
    PasteboardLifetime lifetime;
    friend bool operator==(const Put &, const Put &) = default;
  };

  /// The types that a plain text is offered under, in the order in which they are asked for.
  static PasteboardContents text(std::string_view text) {
    const Bytes bytes(text.begin(), text.end());
    return {{"UTF8_STRING", bytes},
            {"text/plain;charset=utf-8", bytes},
            {"STRING", bytes},
            {"TEXT", bytes, "UTF8_STRING"}};
  }

  PasteboardContents contents(const std::stop_token &token) override {
    std::unique_lock lock(mutex_);
    waitWhileSilent(lock, token);
    return contents_;
  }

  std::int64_t changeCount() override {
    const std::lock_guard lock(mutex_);
    return changeCount_;
  }

  std::optional<std::string> string(const std::stop_token &token) override {
    std::unique_lock lock(mutex_);
    waitWhileSilent(lock, token);
    for (const char *type : {"UTF8_STRING", "text/plain;charset=utf-8", "STRING", "TEXT"}) {
      for (const auto &item : contents_) {
        if (item.type == type) {
          return std::string(item.bytes.begin(), item.bytes.end());
        }
      }
    }
    return std::nullopt;
  }

  void setContents(PasteboardContents contents, PasteboardLifetime lifetime) override {
    const std::lock_guard lock(mutex_);
    puts_.push_back({contents, lifetime});
    replace(std::move(contents));
  }

  void setString(std::string_view string, PasteboardLifetime lifetime) override {
    setContents(text(string), lifetime);
  }

  /// Another application becomes the owner; no contents are an owner that gives up.
  void otherPuts(PasteboardContents contents) {
    const std::lock_guard lock(mutex_);
    replace(std::move(contents));
  }

  /// What the next copy() puts there; nothing when the application in front ignores the copy chord.
  void setNextCopy(std::optional<PasteboardContents> contents) {
    const std::lock_guard lock(mutex_);
    nextCopy_ = std::move(contents);
  }

  /// What the application in front does when it gets the copy chord.
  void copy() {
    const std::lock_guard lock(mutex_);
    if (nextCopy_) {
      replace(*nextCopy_);
    }
  }

  /// An owner that does not answer: reads wait until they are stopped, or until this is taken back.
  void setSilent(bool silent) {
    const std::lock_guard lock(mutex_);
    silent_ = silent;
    changed_.notify_all();
  }

  /// Returns when `count` reads are waiting for a silent owner.
  void waitForReaders(int count = 1) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return silent_ && waiting_ >= count; });
  }

  /// What is there now, whoever put it there.
  PasteboardContents current() const {
    const std::lock_guard lock(mutex_);
    return contents_;
  }

  /// Everything that the program under test has put there, in order.
  std::vector<Put> puts() const {
    const std::lock_guard lock(mutex_);
    return puts_;
  }

private:
  void replace(PasteboardContents contents) {
    contents_ = std::move(contents);
    ++changeCount_;
  }

  void waitWhileSilent(std::unique_lock<std::mutex> &lock, const std::stop_token &token) {
    ++waiting_;
    changed_.notify_all();
    changed_.wait(lock, token, [this] { return !silent_; });
    --waiting_;
    throwIfStopped(token);
  }

  mutable std::mutex mutex_;
  std::condition_variable_any changed_;
  PasteboardContents contents_;
  std::optional<PasteboardContents> nextCopy_;
  std::vector<Put> puts_;
  std::int64_t changeCount_ = 0;
  int waiting_ = 0;
  bool silent_ = false;
};

}  // namespace lumiwren::testing
