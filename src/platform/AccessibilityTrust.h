#pragma once

namespace lumiwren {

/// Whether this session lets the program watch keys and post a keystroke. Any thread; never blocks.
class AccessibilityTrust {
public:
  virtual ~AccessibilityTrust() = default;

  virtual bool isProcessTrusted() = 0;
  /// The same, and lets the session ask the user for the permission, where it can.
  virtual bool isProcessTrustedWithPrompt() = 0;
};

}  // namespace lumiwren
