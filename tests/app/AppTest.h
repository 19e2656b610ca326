#pragma once

#include "app/AppDelegate.h"
#include "platform/testing/FakePlatform.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <utility>

namespace lumiwren::testing {

/// All services of the program on a fake platform, whose keyring holds a key. They outlive what a derived
/// fixture makes of them.
class AppTest : public ::testing::Test {
protected:
  explicit AppTest(MainQueue::Now now = &std::chrono::steady_clock::now) : mainQueue(std::move(now)) {
    platform.secretStore().add(KeychainManager::service, KeychainManager::apiKeyAccount,
                               Secret::copyOf("sk-test"));
  }

  /// What a test has started may still use the services.
  ~AppTest() override { EXPECT_TRUE(Task::endAll(std::chrono::seconds(10))); }

  AppDelegate::Services services() {
    return {{platform, mainQueue, actions, keychain, service, hotkeys, screenCapture, popup},
            launchAtLogin,
            updates};
  }

  FakePlatform platform;
  MainQueue mainQueue;
  KeychainManager keychain{platform.secretStore()};
  OpenAIAPIService service{
      platform.httpClient(), keychain, mainQueue, {.baseURL = "http://127.0.0.1/", .model = "a-model"}};
  CustomActionManager actions{platform.userDefaults()};
  LaunchAtLoginManager launchAtLogin{platform.loginItem(), platform.userDefaults(), mainQueue};
  FakeUpdater updater;
  UpdateManager updates{updater};
  HotkeyManager hotkeys{platform.eventMonitors(), actions, mainQueue};
  const TemporaryFolder captureFolder;
  ScreenCaptureManager screenCapture{platform.screenRecording(), platform.childProcesses(),
                                     platform.workspace(), mainQueue, captureFolder.path()};
  ExplanationPopupController popup{platform.eventMonitors(),
                                   platform.pasteboard(),
                                   platform.screens(),
                                   platform.panelWindows(),
                                   service,
                                   keychain,
                                   mainQueue};
};

}  // namespace lumiwren::testing
