#include "app/ActionDispatch.h"

#include "ai/LumiwrenError.h"
#include "input/ClipboardManager.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace lumiwren {
namespace {

/// `prompt` with every "{text}" replaced, in one pass: what `text` itself contains stays as it is.
std::string filledPrompt(std::string_view prompt, std::string_view text) {
  constexpr std::string_view placeholder = "{text}";
  std::string filled;
  std::size_t begin = 0;
  for (std::size_t found = 0; (found = prompt.find(placeholder, begin)) != std::string_view::npos;) {
    filled.append(prompt, begin, found - begin).append(text);
    begin = found + placeholder.size();
  }
  return filled.append(prompt, begin);
}

/// The part of an action that every kind of input has in common: the request and its streamed answer.
void requestAnswer(const ActionDispatch::Services &services, const CustomAction &action,
                   const std::string &input, const std::stop_token &token) {
  const auto key = services.keychain.getAPIKey();
  if (!key) {
    throw LumiwrenError::noAPIKey();
  }
  const OpenAIRequest request{.model = services.service.model(),
                              .messages = {{.role = "user", .content = filledPrompt(action.prompt, input)}},
                              .maxTokens = OpenAIAPIService::maxTokens,
                              .stream = true};
  std::string fullResponse;
  services.service.streamRequest(
      request, *key,
      [&](const std::string &answerSoFar) {
        fullResponse = answerSoFar;
        services.popup.updateContent(input, answerSoFar, true, std::nullopt);
      },
      token);
  services.mainQueue.runAndWait(
      token, [&] { services.popup.updateContent(input, fullResponse, false, std::nullopt); });
}

}  // namespace

ActionDispatch::ActionDispatch(const Services &services, std::function<void()> showAccessibilityAlert)
    : services_(services), showAccessibilityAlert_(std::move(showAccessibilityAlert)) {}

void ActionDispatch::setupHotkey() {
  services_.hotkeys.onActionHotkeyPressed = [weak = anchor_.weak()](const UUID &id) {
    auto *const self = weak.get();
    if (!self) {
      return;
    }
    const auto &actions = self->services_.actions.actions();
    const auto action =
        std::find_if(actions.begin(), actions.end(), [&](const CustomAction &each) { return each.id == id; });
    if (action != actions.end()) {
      self->dispatchAction(*action);
    }
  };
  services_.hotkeys.startMonitoring();
}

void ActionDispatch::dispatchAction(const CustomAction &action) {
  // A keyring may keep a check waiting until the user has unlocked it. Pressing again meanwhile must not
  // bring up a second prompt; the latest press is the one that counts.
  const bool checking = awaitingKey_.has_value();
  awaitingKey_ = action;
  if (!checking) {
    checkKey();
  }
}

void ActionDispatch::checkKey() {
  keyCheck_ = Task::start([&keychain = services_.keychain, &mainQueue = services_.mainQueue,
                           weak = anchor_.weak()](const std::stop_token &) {
    const bool hasKey = keychain.getAPIKey().has_value();
    mainQueue.post([weak, hasKey] {
      if (auto *const self = weak.get()) {
        self->keyChecked(hasKey);
      }
    });
  });
}

void ActionDispatch::keyChecked(bool hasKey) {
  const CustomAction action = *std::exchange(awaitingKey_, std::nullopt);
  if (!hasKey) {
    showError("API key not configured. Click the menu bar icon to set up your API key.");
  } else if (action.inputType == CustomAction::InputType::ScreenCapture) {
    showError("Screen capture actions are not available in this version.");
  } else {
    triggerActionWithText(action);
  }
}

void ActionDispatch::triggerActionWithText(const CustomAction &action) {
  if (!services_.platform.accessibilityTrust().isProcessTrusted()) {
    showAccessibilityAlert_();
    return;
  }
  currentStreamingTask_ = Task();
  services_.popup.show("Getting text...", std::nullopt, true, std::nullopt);
  currentStreamingTask_ = Task::start([services = services_, action](const std::stop_token &token) {
    const auto showFailure = [&](const std::string &message) {
      // Not with the task's token: a failure that came before the task was cancelled is shown like any other.
      services.mainQueue.runAndWait({},
                                    [&] { services.popup.updateContent("", std::nullopt, false, message); });
    };
    try {
      ClipboardManager clipboard(services.platform.accessibilityTrust(), services.platform.pasteboard(),
                                 services.platform.selectionCopy());
      const std::string input = clipboard.captureSelectedText(token);
      services.mainQueue.runAndWait(
          token, [&] { services.popup.updateContent(input, std::nullopt, true, std::nullopt); });
      requestAnswer(services, action, input, token);
    } catch (const CancellationError &) {
      throw;
    } catch (const LumiwrenError &error) {
      showFailure(error.errorDescription());
    } catch (const std::exception &error) {
      showFailure(error.what());
    }
  });
}

void ActionDispatch::showError(const std::string &message) {
  services_.popup.show("", std::nullopt, false, message);
}

}  // namespace lumiwren
