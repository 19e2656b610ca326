#include "input/ClipboardManager.h"

#include "ai/LumiwrenError.h"
#include "base/Task.h"

#include <exception>
#include <utility>

namespace lumiwren {

std::string ClipboardManager::captureSelectedText(const std::stop_token &token) {
  if (!trust_.isProcessTrusted()) {
    throw LumiwrenError::accessibilityNotGranted();
  }
  PasteboardContents saved = pasteboard_.contents(token);
  const auto restore = [&] { pasteboard_.setContents(std::move(saved), PasteboardLifetime::Lasting); };

  const auto changeCount = pasteboard_.changeCount();
  selectionCopy_.postCopy(token);
  sleepFor(token, copyWait);
  if (pasteboard_.changeCount() == changeCount) {
    restore();
    throw LumiwrenError::noTextSelected();
  }
  std::optional<std::string> text;
  try {
    text = pasteboard_.string(token);
  } catch (...) {
    restore();
    throw;
  }
  restore();
  if (!text || text->empty()) {
    throw LumiwrenError::clipboardEmpty();
  }
  return *std::move(text);
}

}  // namespace lumiwren
