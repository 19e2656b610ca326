#pragma once

#include "base/Task.h"
#include "popup/ExplanationPopupView.h"
#include "popup/KeyablePanel.h"
#include "popup/PopupParts.h"

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QPushButton>
#include <QWidget>

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>

namespace lumiwren::testing {

/// A button by its accessible name, or by its text where it has none.
inline QPushButton &button(const QWidget &window, const char *name) {
  for (auto *const candidate : window.findChildren<QPushButton *>()) {
    if (candidate->accessibleName() == QLatin1String(name) || candidate->text() == QLatin1String(name)) {
      return *candidate;
    }
  }
  throw std::runtime_error(std::string("no button ") + name);
}

struct StillTime {
  MainQueue::TimePoint now{};
};

/// A controller whose time stands still until the test moves it.
class PopupTest : public ::testing::Test, protected StillTime, protected PopupParts {
protected:
  PopupTest() : PopupParts([this] { return now; }) { keychain.saveAPIKey(Secret::copyOf("key")); }
  ~PopupTest() override { EXPECT_TRUE(Task::endAll(std::chrono::seconds(10))); }

  void advance(std::chrono::milliseconds duration) {
    now += duration;
    queue.runPending();
  }
  /// Runs the main queue until the condition holds; what it waits for happens on other threads.
  bool runUntil(const std::function<bool()> &condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition() && std::chrono::steady_clock::now() < end) {
      queue.runPending();
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return condition();
  }
  void show(const std::string &text = "source", std::optional<std::string> explanation = std::nullopt,
            bool isLoading = false, std::optional<std::string> error = std::nullopt) {
    controller.show(text, std::move(explanation), isLoading, std::move(error));
    queue.runPending();
  }
  void update(std::optional<std::string> explanation, bool isLoading = false,
              std::optional<std::string> error = std::nullopt) {
    controller.updateContent("source", std::move(explanation), isLoading, std::move(error));
    queue.runPending();
  }
  PopupState &state() { return controller.popupState(); }
  const std::vector<ConversationMessage> &history() { return state().conversationHistory(); }
  std::string pasted() const {
    const auto contents = pasteboard.current();
    return contents.empty() ? "" : std::string(contents[0].bytes.begin(), contents[0].bytes.end());
  }

  static std::string chunk(const std::string &content) {
    return "data: {\"choices\":[{\"delta\":{\"content\":\"" + content + "\"}}]}\n\n";
  }

  ExplanationPopupController controller = makeController();
};

}  // namespace lumiwren::testing
