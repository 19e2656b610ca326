#pragma once

#include "platform/AccessibilityTrust.h"
#include "platform/ApplicationWindows.h"
#include "platform/PanelWindows.h"
#include "platform/Pasteboard.h"
#include "platform/ScreenRecording.h"
#include "platform/Screens.h"
#include "platform/SelectionCopy.h"

namespace lumiwren {

/// The facilities of a session that does not let programs watch keys or read what other programs select.

class UnavailableAccessibility : public AccessibilityTrust {
public:
  bool isProcessTrusted() override { return false; }
  bool isProcessTrustedWithPrompt() override { return false; }
};

class UnavailablePasteboard : public Pasteboard {
public:
  PasteboardContents contents(const std::stop_token &) override { return {}; }
  std::int64_t changeCount() override { return 0; }
  std::optional<std::string> string(const std::stop_token &) override { return std::nullopt; }
  void setContents(PasteboardContents, PasteboardLifetime) override {}
  void setString(std::string_view, PasteboardLifetime) override {}
};

class UnavailableSelectionCopy : public SelectionCopy {
public:
  void postCopy(const std::stop_token &) override {}
};

class UnavailableScreens : public Screens {
public:
  Point mouseLocation() override { return {}; }
  std::optional<Rect> mainScreenVisibleFrame() override { return std::nullopt; }
};

class UnavailablePanelWindows : public PanelWindows {
public:
  bool isTranslucencySupported() override { return false; }
  Handle observeTranslucency(std::function<void()>) override { return {}; }
  void setForm(NativeWindow, const WindowForm &) override {}
  void makeKey(NativeWindow) override {}
  void resignKey(NativeWindow) override {}
  Rect frame(NativeWindow) override { return {}; }
};

class UnavailableApplicationWindows : public ApplicationWindows {
public:
  void activate(NativeWindow) override {}
  void handOverKeyboard(NativeWindow) override {}
  void setFloating(NativeWindow) override {}
};

class UnavailableScreenRecording : public ScreenRecording {
public:
  bool canRecord() override { return false; }
  std::filesystem::path tool() override { return {}; }
};

}  // namespace lumiwren
