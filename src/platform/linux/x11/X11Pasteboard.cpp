#include "platform/linux/x11/X11Pasteboard.h"

#include "platform/linux/x11/selection/PasteboardHolderClient.h"
#include "platform/linux/x11/selection/SelectionText.h"
#include "platform/linux/x11/selection/SelectionThread.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace lumiwren {

using namespace std::chrono_literals;

namespace {

using Clock = SelectionThread::Clock;

constexpr auto readingLimit = 2s;
// A longer list is not one of types that somebody could paste.
constexpr std::size_t maximumTypes = 256;

const std::array<std::string, 4> textTypes{"UTF8_STRING", "text/plain;charset=utf-8", "STRING", "TEXT"};

// Targets that describe the transfer. Some of them are commands: to ask for DELETE is to delete.
constexpr std::array<std::string_view, 8> metaTargets{
    "TARGETS", "TIMESTAMP", "MULTIPLE", "SAVE_TARGETS", "DELETE", "INSERT_SELECTION", "INSERT_PROPERTY", ""};

// KDE's convention, which other clipboard managers follow: what says "secret" here is not recorded.
const PasteboardItem temporaryMark{"x-kde-passwordManagerHint", {'s', 'e', 'c', 'r', 'e', 't'}};

std::vector<std::string> typesAmong(const std::vector<std::string> &targets) {
  std::vector<std::string> types;
  for (const auto &target : targets) {
    if (types.size() < maximumTypes &&
        std::find(metaTargets.begin(), metaTargets.end(), target) == metaTargets.end() &&
        std::find(types.begin(), types.end(), target) == types.end()) {
      types.push_back(target);
    }
  }
  return types;
}

PasteboardContents contentsOf(std::vector<std::string> types, SelectionThread::Reading reading) {
  PasteboardContents contents;
  for (std::size_t index = 0; index < types.size(); ++index) {
    if (auto &value = reading.values[index]) {
      auto encoding = value->encoding == types[index] ? std::string() : std::move(value->encoding);
      contents.push_back(
          {std::move(types[index]), std::move(value->bytes), std::move(encoding), value->unit});
    }
  }
  return contents;
}

}  // namespace

X11Pasteboard::X11Pasteboard(std::filesystem::path holderExecutable)
    : selections_(std::make_unique<SelectionThread>()),
      holder_(std::make_unique<PasteboardHolderClient>(std::move(holderExecutable))) {}

X11Pasteboard::~X11Pasteboard() = default;

PasteboardContents X11Pasteboard::contents(const std::stop_token &token) {
  const auto deadline = Clock::now() + readingLimit;
  for (;;) {
    auto offered = selections_->read(Selection::Clipboard, {"TARGETS"}, deadline, token);
    std::vector<std::string> types;
    if (offered.values[0]) {
      types = typesAmong(selections_->atomNames(std::move(offered.values[0]->bytes)));
    } else if (!offered.ownerChanged && Clock::now() < deadline &&
               selections_->hasOwner(Selection::Clipboard)) {
      // Owners of old give a text without saying so.
      types.assign(textTypes.begin(), textTypes.end());
    }
    auto reading = selections_->read(Selection::Clipboard, types, deadline, token);
    if ((offered.ownerChanged || reading.ownerChanged) && Clock::now() < deadline) {
      continue;
    }
    auto contents = contentsOf(std::move(types), std::move(reading));
    if (!contents.empty()) {
      // They are most likely to be put back in a moment.
      holder_->prepare();
    }
    return contents;
  }
}

std::int64_t X11Pasteboard::changeCount() {
  return selections_->changeCount();
}

std::optional<std::string> X11Pasteboard::string(const std::stop_token &token) {
  return read(Selection::Clipboard, token);
}

std::optional<std::string> X11Pasteboard::read(Selection selection, const std::stop_token &token) {
  const auto deadline = Clock::now() + readingLimit;
  for (std::size_t index = 0; index < textTypes.size();) {
    const auto reading = selections_->read(selection, {textTypes[index]}, deadline, token);
    if (const auto &value = reading.values[0]) {
      if (auto text = decodeSelectionText(value->encoding, value->bytes)) {
        return text;
      }
    }
    if (Clock::now() >= deadline) {
      return std::nullopt;
    }
    index = reading.ownerChanged ? 0 : index + 1;
  }
  return std::nullopt;
}

void X11Pasteboard::setContents(PasteboardContents contents, PasteboardLifetime lifetime) {
  if (contents.empty()) {
    selections_->clearClipboard();
    return;
  }
  if (lifetime == PasteboardLifetime::Temporary) {
    contents.push_back(temporaryMark);
  }
  holder_->put(contents);
}

void X11Pasteboard::setString(std::string_view text, PasteboardLifetime lifetime) {
  setContents(plainTextContents(text), lifetime);
}

bool X11Pasteboard::copyPrimary(std::uint32_t window, const std::stop_token &token) {
  if (!selections_->isOwnedByClientOf(window, Selection::Primary)) {
    return false;
  }
  const auto text = read(Selection::Primary, token);
  if (!text || text->empty()) {
    return false;
  }
  setString(*text, PasteboardLifetime::Temporary);
  return true;
}

}  // namespace lumiwren
