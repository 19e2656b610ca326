#pragma once

#include "platform/AccessibilityTrust.h"
#include "platform/Pasteboard.h"
#include "platform/SelectionCopy.h"

#include <chrono>
#include <stop_token>
#include <string>

namespace lumiwren {

/// Obtains the text that is selected in the application in front, through the general pasteboard, and puts
/// back what the user had there. Holds no state; not on the main thread.
class ClipboardManager {
public:
  /// What the application in front is given to answer the copy; the whole latency of a capture.
  static constexpr std::chrono::milliseconds copyWait{150};

  ClipboardManager(AccessibilityTrust &trust, Pasteboard &pasteboard, SelectionCopy &selectionCopy)
      : trust_(trust), pasteboard_(pasteboard), selectionCopy_(selectionCopy) {}

  /// The selected text as it is. Throws LumiwrenError::accessibilityNotGranted, noTextSelected (the copy
  /// changed nothing) or clipboardEmpty (it left no plain text), and CancellationError when `token` is
  /// stopped. Whatever happens after the copy, the pasteboard is put back, with one exception: a capture that
  /// is stopped during the wait leaves what the copy made of it.
  std::string captureSelectedText(const std::stop_token &token);

private:
  AccessibilityTrust &trust_;
  Pasteboard &pasteboard_;
  SelectionCopy &selectionCopy_;
};

}  // namespace lumiwren
