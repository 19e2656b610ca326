#pragma once

#include "ai/KeychainManager.h"
#include "ai/OpenAIAPIService.h"
#include "base/MainQueue.h"
#include "platform/testing/FakeEventMonitors.h"
#include "platform/testing/FakeHTTPClient.h"
#include "platform/testing/FakePanelWindows.h"
#include "platform/testing/FakePasteboard.h"
#include "platform/testing/FakeScreens.h"
#include "platform/testing/FakeSecretStore.h"
#include "popup/ExplanationPopupController.h"

#include <chrono>
#include <utility>

namespace lumiwren::testing {

/// What a popup works with; it outlives the popups that are made of it.
struct PopupParts {
  explicit PopupParts(MainQueue::Now now = &std::chrono::steady_clock::now) : queue(std::move(now)) {}

  ExplanationPopupController makeController() {
    return {monitors, pasteboard, screens, windows, service, keychain, queue};
  }

  MainQueue queue;
  FakeEventMonitors monitors;
  FakePasteboard pasteboard;
  FakeScreens screens;
  FakePanelWindows windows;
  FakeHTTPClient http;
  FakeSecretStore store;
  KeychainManager keychain{store};
  OpenAIAPIService service{http, keychain, queue, {}};
};

}  // namespace lumiwren::testing
