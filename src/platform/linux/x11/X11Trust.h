#pragma once

#include "platform/AccessibilityTrust.h"
#include "platform/linux/x11/X11InputChannel.h"

namespace lumiwren {

/// An X server lets every client watch and post keys, if it can do so at all; there is nobody to ask.
class X11Trust : public AccessibilityTrust {
public:
  explicit X11Trust(const X11InputChannel &channel) : channel_(channel) {}

  bool isProcessTrusted() override { return channel_.isUsable(); }
  bool isProcessTrustedWithPrompt() override { return isProcessTrusted(); }

private:
  const X11InputChannel &channel_;
};

}  // namespace lumiwren
