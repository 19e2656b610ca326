#pragma once

#include "platform/Pasteboard.h"
#include "platform/linux/FileDescriptor.h"

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <thread>

namespace lumiwren {

/// Puts contents on the clipboard by way of a holder: a small process that outlives this one for as long as
/// it owns the clipboard. Where it cannot be started a thread does the same work and ends with the program;
/// that is printed as one line. Any thread.
class PasteboardHolderClient {
public:
  explicit PasteboardHolderClient(std::filesystem::path executable) : executable_(std::move(executable)) {}
  PasteboardHolderClient(const PasteboardHolderClient &) = delete;
  PasteboardHolderClient &operator=(const PasteboardHolderClient &) = delete;
  ~PasteboardHolderClient();

  /// Starts a holder in the background, unless one is there, because contents are soon to be put.
  void prepare();
  /// The contents are on the clipboard when this returns, or on their way where the X server is slow.
  void put(const PasteboardContents &contents);

private:
  enum class Holder { Current, NewProcess, Thread };

  bool isThere() const;
  bool start(Holder kind);
  bool startProcess(const FileDescriptor &socket) const;
  void startThread(FileDescriptor socket);
  bool deliver(const FileDescriptor &parcel);

  const std::filesystem::path executable_;
  std::mutex mutex_;  // guards what follows
  FileDescriptor socket_;
  std::uint64_t messages_ = 0;
  bool complained_ = false;
  std::jthread holderThread_;

  std::mutex starterMutex_;
  std::jthread starter_;
};

}  // namespace lumiwren
