#include "app/ActionDispatch.h"

#include "ai/LumiwrenError.h"
#include "input/ClipboardManager.h"
#include "input/OCRError.h"
#include "input/OCRManager.h"

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

using Acquisition = std::function<std::string(const std::stop_token &)>;

/// The task of one action: its input is acquired and shown, then the answer. Failures are shown as well.
Task startStreaming(const ActionDispatch::Services &services, const CustomAction &action, Acquisition input) {
  return Task::start([services, action, input = std::move(input)](const std::stop_token &token) {
    const auto showFailure = [&](const std::string &message) {
      // Not with the task's token: a failure that came before the task was cancelled is shown like any other.
      services.mainQueue.runAndWait({},
                                    [&] { services.popup.updateContent("", std::nullopt, false, message); });
    };
    try {
      const std::string text = input(token);
      services.mainQueue.runAndWait(
          token, [&] { services.popup.updateContent(text, std::nullopt, true, std::nullopt); });
      requestAnswer(services, action, text, token);
    } catch (const CancellationError &) {
      throw;
    } catch (const OCRError &error) {
      showFailure(error.errorDescription());
    } catch (const LumiwrenError &error) {
      showFailure(error.errorDescription());
    } catch (const std::exception &error) {
      showFailure(error.what());
    }
  });
}

}  // namespace

ActionDispatch::ActionDispatch(const Services &services, Alerts alerts)
    : services_(services), alerts_(std::move(alerts)) {}

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
    triggerActionWithOCR(action);
  } else {
    triggerActionWithText(action);
  }
}

void ActionDispatch::triggerActionWithText(const CustomAction &action) {
  auto &platform = services_.platform;
  if (!platform.accessibilityTrust().isProcessTrusted()) {
    alerts_.showAccessibilityAlert();
    return;
  }
  currentStreamingTask_ = Task();
  services_.popup.show("Getting text...", std::nullopt, true, std::nullopt);
  // While the text is copied, and after the panel, which is waited for.
  platform.httpClient().prepare();
  currentStreamingTask_ = startStreaming(services_, action, [&platform](const std::stop_token &token) {
    ClipboardManager clipboard(platform.accessibilityTrust(), platform.pasteboard(),
                               platform.selectionCopy());
    return clipboard.captureSelectedText(token);
  });
}

void ActionDispatch::triggerActionWithOCR(const CustomAction &action) {
  if (!services_.platform.screenRecording().canRecord()) {
    alerts_.showScreenRecordingAlert();
    return;
  }
  currentStreamingTask_ = Task();
  services_.screenCapture.captureRegion(
      [weak = anchor_.weak(), action](const std::optional<Image> &image, std::optional<Point> /*point*/) {
        if (auto *const self = weak.get(); self && image) {
          self->recognize(action, *image);
        }
      });
  // While the user draws.
  services_.platform.textRecognizer().prepare();
  services_.platform.httpClient().prepare();
}

void ActionDispatch::recognize(const CustomAction &action, const Image &image) {
  auto &platform = services_.platform;
  services_.popup.show("Extracting text from image...", std::nullopt, true, std::nullopt);
  currentStreamingTask_ = startStreaming(services_, action, [&platform, image](const std::stop_token &token) {
    return OCRManager(platform.imageDecoder(), platform.textRecognizer()).extractText(image, token);
  });
}

void ActionDispatch::showError(const std::string &message) {
  services_.popup.show("", std::nullopt, false, message);
}

}  // namespace lumiwren
