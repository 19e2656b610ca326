#pragma once

#include "ai/KeychainQueue.h"
#include "ai/OpenAIAPIService.h"
#include "base/MainQueue.h"
#include "base/Task.h"
#include "platform/testing/FakeApplicationWindows.h"
#include "platform/testing/FakeHTTPClient.h"
#include "platform/testing/FakeSecretStore.h"
#include "platform/testing/FakeWorkspace.h"
#include "settings/ConnectionTest.h"
#include "ui/PushButton.h"
#include "ui/SecureField.h"
#include "ui/TextLabel.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QCoreApplication>
#include <QWidget>

#include <chrono>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

namespace lumiwren::testing {

/// What the forms work with, and how a test works with a form.
class FormTest : public ::testing::Test {
protected:
  ~FormTest() override {
    store.setSilent(false);
    EXPECT_TRUE(Task::endAll(std::chrono::seconds(10)));
  }

  /// Runs the main queue until the condition holds; what it waits for happens on other threads.
  bool runUntil(const std::function<bool()> &condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition() && std::chrono::steady_clock::now() < end) {
      mainQueue.runPending();
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return condition();
  }
  /// Lets everything happen that the keyring has been asked for so far.
  void settle() {
    bool settled = false;
    queue.getAPIKey([&](const std::optional<Secret> &) { settled = true; });
    EXPECT_TRUE(runUntil([&] { return settled; }));
  }
  std::optional<std::string> storedKey() {
    const auto key = keychain.getAPIKey();
    return key ? std::optional(std::string(key->reveal())) : std::nullopt;
  }

  static QAbstractButton *findButton(const QWidget &window, const char *name) {
    for (auto *const each : window.findChildren<QAbstractButton *>()) {
      if (each->accessibleName() == QLatin1String(name)) {
        return each;
      }
    }
    return nullptr;
  }
  static QAbstractButton &button(const QWidget &window, const char *name) {
    if (auto *const found = findButton(window, name)) {
      return *found;
    }
    throw std::runtime_error(std::string("no button ") + name);
  }
  static SecureField &field(const QWidget &window) { return *window.findChild<SecureField *>(); }
  static void type(const QWidget &window, const char *key) {
    field(window).selectAll();
    field(window).insert(QString::fromUtf8(key));
  }
  /// The label with this text, when it is to be seen once the window is.
  static TextLabel *label(const QWidget &window, const QString &text) {
    for (auto *const each : window.findChildren<TextLabel *>()) {
      if (each->text() == text && each->isVisibleTo(&window)) {
        return each;
      }
    }
    return nullptr;
  }

  MainQueue mainQueue;
  FakeHTTPClient http;
  FakeSecretStore store;
  FakeWorkspace workspace;
  FakeApplicationWindows windows;
  KeychainManager keychain{store};
  OpenAIAPIService service{http, keychain, mainQueue, {}};
  KeychainQueue queue{keychain, mainQueue};
  const KeyFormServices services{queue, service, mainQueue};
  int dismissals = 0;
  const std::function<void()> dismiss = [this] { ++dismissals; };
};

}  // namespace lumiwren::testing
