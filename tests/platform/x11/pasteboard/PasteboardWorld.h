#pragma once

#include "platform/linux/x11/X11Pasteboard.h"
#include "support/Process.h"
#include "support/XServer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lumiwren::testing {

/// An X server, the pasteboard on it, and the other programs there. At its end it is a failure when a holder
/// survives the server.
class PasteboardWorld {
public:
  PasteboardWorld();
  PasteboardWorld(const PasteboardWorld &) = delete;
  PasteboardWorld &operator=(const PasteboardWorld &) = delete;
  ~PasteboardWorld();

  /// Made when it is first asked for.
  X11Pasteboard &pasteboard();
  void quit() { pasteboard_.reset(); }
  /// Before the pasteboard is asked for.
  void setHolder(std::filesystem::path executable) { holder_ = std::move(executable); }
  const std::filesystem::path &holder() const { return holder_; }

  XServer &server() { return server_.value(); }
  void endServer() { server_.reset(); }

  std::unique_ptr<Process> start(std::vector<std::string> command) const;
  /// A selection_owner, or any program that says "ready", that owns the selection when this returns.
  std::unique_ptr<Process> startOwner(std::vector<std::string> words) const;
  std::unique_ptr<Process> startReady(std::vector<std::string> command) const;
  /// What a program prints that ends by itself.
  std::vector<std::string> output(std::vector<std::string> command) const;
  std::vector<std::string> requestor(std::vector<std::string> words) const;

  /// Another application takes the pasteboard; no contents are an owner that goes.
  void otherPuts(const PasteboardContents &contents);

  /// The processes that hold the pasteboard of this world.
  std::vector<pid_t> holders() const;

private:
  std::optional<XServer> server_;
  std::filesystem::path directory_;
  std::filesystem::path holder_;
  std::string holderName_;
  std::unique_ptr<X11Pasteboard> pasteboard_;
  std::unique_ptr<Process> other_;
};

class X11PasteboardTest : public ::testing::Test {
protected:
  PasteboardWorld world_;
};

}  // namespace lumiwren::testing
