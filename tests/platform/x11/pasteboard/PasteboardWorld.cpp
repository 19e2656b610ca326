#include "platform/x11/pasteboard/PasteboardWorld.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace lumiwren::testing {

PasteboardWorld::PasteboardWorld() : server_(std::in_place) {
  for (const auto &[name, value] : server_->environment()) {
    setenv(name.c_str(), value.c_str(), 1);
  }
  // A name of its own tells this world's holders from those of others.
  std::string name = std::filesystem::temp_directory_path() / "pasteboardXXXXXX";
  if (mkdtemp(name.data()) == nullptr) {
    throw std::runtime_error("mkdtemp");
  }
  directory_ = name;
  holderName_ = "holder-" + directory_.filename().string();
  holder_ = directory_ / holderName_;
  std::filesystem::create_symlink(LUMIWREN_PASTEBOARD, holder_);
}

PasteboardWorld::~PasteboardWorld() {
  quit();
  other_.reset();
  endServer();
  for (const auto pid : holders()) {
    try {
      EXPECT_TRUE(ProcessWatch(pid).waitForEnd()) << "a holder outlives the X server";
    } catch (const std::system_error &) {
      // It has ended before it could be watched.
    }
  }
  std::filesystem::remove_all(directory_);
}

X11Pasteboard &PasteboardWorld::pasteboard() {
  if (!pasteboard_) {
    pasteboard_ = std::make_unique<X11Pasteboard>(holder_);
  }
  return *pasteboard_;
}

std::unique_ptr<Process> PasteboardWorld::start(std::vector<std::string> command) const {
  return std::make_unique<Process>(
      Process::Options{.command = std::move(command), .environment = server_->environment()});
}

std::unique_ptr<Process> PasteboardWorld::startReady(std::vector<std::string> command) const {
  auto process = start(std::move(command));
  EXPECT_TRUE(process->waitForLine("ready"));
  return process;
}

std::unique_ptr<Process> PasteboardWorld::startOwner(std::vector<std::string> words) const {
  words.insert(words.begin(), SELECTION_OWNER);
  return startReady(std::move(words));
}

std::vector<std::string> PasteboardWorld::output(std::vector<std::string> command) const {
  const auto process = start(std::move(command));
  process->closeInput();
  std::vector<std::string> lines;
  while (auto line = process->readLine()) {
    lines.push_back(*std::move(line));
  }
  EXPECT_EQ(process->wait(), 0);
  return lines;
}

std::vector<std::string> PasteboardWorld::requestor(std::vector<std::string> words) const {
  words.insert(words.begin(), SELECTION_REQUESTOR);
  return output(std::move(words));
}

void PasteboardWorld::otherPuts(const PasteboardContents &contents) {
  if (contents.empty()) {
    other_->kill(SIGKILL);
    EXPECT_TRUE(other_->wait());
    // The server has noticed when it answers somebody else.
    while (requestor({"list"}) != std::vector<std::string>{"targets:"}) {
    }
    return;
  }
  std::vector<std::string> words;
  for (const auto &item : contents) {
    std::string hex;
    for (const auto byte : item.bytes) {
      constexpr char digits[] = "0123456789abcdef";
      hex += digits[byte >> 4];
      hex += digits[byte & 15];
    }
    words.insert(words.end(), {"give-hex", item.type, item.encoding.empty() ? item.type : item.encoding,
                               std::to_string(item.unit * 8), hex});
  }
  auto owner = startOwner(words);
  other_ = std::move(owner);
}

std::vector<pid_t> PasteboardWorld::holders() const {
  std::vector<pid_t> pids;
  for (const auto &entry : std::filesystem::directory_iterator("/proc")) {
    const auto name = entry.path().filename().string();
    if (name.find_first_not_of("0123456789") != std::string::npos) {
      continue;
    }
    std::ifstream file(entry.path() / "cmdline");
    std::string program;
    std::getline(file, program, '\0');  // Fails, and does not throw, when the process has just ended.
    if (program == holderName_) {
      pids.push_back(std::stoi(name));
    }
  }
  return pids;
}

}  // namespace lumiwren::testing
