#include "app/ActionDispatch.h"

#include "ai/LumiwrenError.h"
#include "app/AppTest.h"
#include "platform/KeyCodes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace lumiwren {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr std::chrono::seconds patience{20};

/// What the popup shows at one moment.
struct Shown {
  std::string originalText;
  std::optional<std::string> explanation;
  bool isLoading = false;
  std::optional<std::string> error;
  friend bool operator==(const Shown &, const Shown &) = default;
};

std::string chunk(const std::string &content) {
  const nlohmann::json json = {{"choices", {{{"index", 0}, {"delta", {{"content", content}}}}}}};
  return "data: " + json.dump() + "\n\n";
}

class ActionDispatchTest : public testing::AppTest {
protected:
  ActionDispatchTest() {
    mainQueue.setWaker([this] {
      const std::lock_guard lock(mutex);
      awake = true;
      woken.notify_all();
    });
    platform.selectionCopy().onCopy = [this] { platform.pasteboard().copy(); };
    select("the selection");
    dispatch->setupHotkey();
  }
  ~ActionDispatchTest() override {
    platform.secretStore().setSilent(false);
    dispatch.reset();
    mainQueue.close();
    EXPECT_TRUE(Task::endAll(patience));
  }

  void select(const std::string &text) {
    platform.pasteboard().setNextCopy(testing::FakePasteboard::text(text));
  }

  CustomAction addAction(const std::string &prompt,
                         CustomAction::InputType inputType = CustomAction::InputType::TextSelection) {
    const CustomAction action{
        .id = UUID::random(), .name = "An action", .hotkey = {}, .prompt = prompt, .inputType = inputType};
    actions.addAction(action);
    return action;
  }

  Shown shown() {
    const PopupState &state = popup.popupState();
    return {state.originalText(), state.explanation(), state.isLoading(), state.error()};
  }

  /// Runs the main queue until `condition` holds.
  void waitUntil(const std::function<bool()> &condition) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
      {
        std::unique_lock lock(mutex);
        ASSERT_TRUE(woken.wait_until(lock, deadline, [this] { return awake; })) << "nothing happened";
        awake = false;
      }
      mainQueue.runPending();
    }
  }
  void waitUntilShown(const Shown &expected) {
    waitUntil([&] { return shown() == expected; });
    EXPECT_EQ(shown(), expected);
  }

  nlohmann::json sentBody(std::size_t request) {
    return nlohmann::json::parse(platform.httpClient().requests().at(request).body);
  }
  std::string sentPrompt(std::size_t request) {
    return sentBody(request).at("messages").at(0).at("content").get<std::string>();
  }
  /// Runs an action with this prompt on `selection` and returns the prompt that is sent.
  std::string promptSentFor(const std::string &prompt, const std::string &selection) {
    select(selection);
    platform.httpClient().expect(200);
    dispatch->dispatchAction(addAction(prompt));
    waitUntilShown({selection, "", false, std::nullopt});
    return sentPrompt(0);
  }

  std::mutex mutex;
  std::condition_variable woken;
  bool awake = false;

  int alerts = 0;
  int recordingAlerts = 0;
  std::optional<ActionDispatch> dispatch{
      std::in_place, services(),
      ActionDispatch::Alerts{.showAccessibilityAlert = [this] { ++alerts; },
                             .showScreenRecordingAlert = [this] { ++recordingAlerts; }}};
};

TEST_F(ActionDispatchTest, AHotkeyPressStreamsTheAnswerIntoThePopup) {
  const auto exchange = platform.httpClient().expect();
  platform.eventMonitors().pressKeyElsewhere(keyCode::e, modifier::option | modifier::shift);
  waitUntilShown({"Getting text...", std::nullopt, true, std::nullopt});
  waitUntilShown({"the selection", std::nullopt, true, std::nullopt});
  exchange->respond(200).push(chunk("Hel"));
  waitUntilShown({"the selection", "Hel", true, std::nullopt});
  exchange->push(chunk("lo"));
  waitUntilShown({"the selection", "Hello", true, std::nullopt});
  exchange->end();
  waitUntilShown({"the selection", "Hello", false, std::nullopt});
  EXPECT_NE(popup.panel(), nullptr);
}

TEST_F(ActionDispatchTest, SendsOneUserMessageWithTheModelAndTheLimitAsAStream) {
  promptSentFor("Explain: {text}", "this");
  EXPECT_EQ(sentBody(0), (nlohmann::json{{"model", "a-model"},
                                         {"messages", {{{"role", "user"}, {"content", "Explain: this"}}}},
                                         {"max_tokens", 500},
                                         {"stream", true}}));
}

TEST_F(ActionDispatchTest, APlaceholderThatStandsTwiceIsFilledAtBothPlaces) {
  EXPECT_EQ(promptSentFor("{text} and {text}!", "A"), "A and A!");
}

TEST_F(ActionDispatchTest, APromptWithoutThePlaceholderIsSentAsItIs) {
  EXPECT_EQ(promptSentFor("Tell a joke. {TEXT}{ text }", "A"), "Tell a joke. {TEXT}{ text }");
}

TEST_F(ActionDispatchTest, APlaceholderInTheSelectionIsNotExpanded) {
  EXPECT_EQ(promptSentFor("<{text}>", "a {text} b"), "<a {text} b>");
}

TEST_F(ActionDispatchTest, OfTwoQuickPressesOnlyTheSecondIsAnsweredAndNoErrorIsShown) {
  std::vector<Shown> history;
  const Handle watching = popup.popupState().observe([&] { history.push_back(shown()); });
  const auto first = platform.httpClient().expect();
  first->respond(200).push(chunk("of the first"));
  const auto second = platform.httpClient().expect();
  const CustomAction action = addAction("{text}");
  dispatch->dispatchAction(action);
  waitUntilShown({"the selection", "of the first", true, std::nullopt});

  select("another selection");
  dispatch->dispatchAction(action);
  waitUntilShown({"Getting text...", std::nullopt, true, std::nullopt});
  first->waitUntilClosed();
  const std::size_t secondBegins = history.size();
  first->push(chunk(" too late")).end();
  second->respond(200).push(chunk("of the second")).end();
  waitUntilShown({"another selection", "of the second", false, std::nullopt});

  EXPECT_THAT(history, Each(Field(&Shown::error, std::optional<std::string>())));
  const std::vector<Shown> afterwards(history.begin() + static_cast<std::ptrdiff_t>(secondBegins),
                                      history.end());
  EXPECT_THAT(afterwards, Each(Field(&Shown::originalText, Not("the selection"))));
}

TEST_F(ActionDispatchTest, ASecondPressDuringTheCaptureCancelsTheFirstWithoutARequest) {
  const CustomAction action = addAction("{text}");
  std::promise<void> secondCopy;
  bool isCapturing = false;
  platform.selectionCopy().onCopy = [&] {
    platform.pasteboard().copy();
    if (platform.selectionCopy().copies == 1) {
      mainQueue.post([&] { isCapturing = true; });
      secondCopy.get_future().wait_for(patience);  // The first is still at it when the second is.
    } else {
      secondCopy.set_value();
    }
  };
  platform.httpClient().expect(200, {chunk("answer")});
  dispatch->dispatchAction(action);
  waitUntil([&] { return isCapturing; });
  dispatch->dispatchAction(action);
  waitUntilShown({"the selection", "answer", false, std::nullopt});
  EXPECT_EQ(platform.httpClient().requests().size(), 1U);
}

TEST_F(ActionDispatchTest, TheHotkeyOfAnActionThatIsGoneDoesNothing) {
  hotkeys.onActionHotkeyPressed(UUID::random());
  mainQueue.runPending();
  EXPECT_EQ(popup.panel(), nullptr);
  EXPECT_THAT(platform.secretStore().count(testing::FakeSecretStore::Operation::CopyMatching), 0U);
}

TEST_F(ActionDispatchTest, WithoutAKeyTheMessageIsShownAndNothingIsCaptured) {
  keychain.deleteAPIKey();
  platform.accessibilityTrust().trusted = false;
  dispatch->dispatchAction(addAction("{text}"));
  waitUntilShown(
      {"", std::nullopt, false, "API key not configured. Click the menu bar icon to set up your API key."});
  EXPECT_EQ(alerts, 0);
  EXPECT_EQ(platform.selectionCopy().copies, 0);
}

TEST_F(ActionDispatchTest, WithoutAKeyTheRunningActionGoesOn) {
  const auto exchange = platform.httpClient().expect();
  exchange->respond(200).push(chunk("answer"));
  dispatch->dispatchAction(addAction("{text}"));
  waitUntilShown({"the selection", "answer", true, std::nullopt});
  keychain.deleteAPIKey();
  dispatch->dispatchAction(addAction("{text}"));
  waitUntil([&] { return shown().error.has_value(); });
  EXPECT_FALSE(exchange->isClosed());
  exchange->push(chunk("!")).end();
  waitUntilShown({"the selection", "answer!", false, std::nullopt});
}

TEST_F(ActionDispatchTest, AKeyThatIsRemovedDuringTheCaptureIsReported) {
  platform.selectionCopy().onCopy = [this] {
    platform.pasteboard().copy();
    keychain.deleteAPIKey();
  };
  dispatch->dispatchAction(addAction("{text}"));
  waitUntilShown({"", std::nullopt, false, LumiwrenError::noAPIKey().errorDescription()});
  EXPECT_THAT(platform.httpClient().requests(), IsEmpty());
}

TEST_F(ActionDispatchTest, AnEmptyStoredKeyIsAKey) {
  keychain.saveAPIKey(Secret());
  platform.httpClient().expect(200, {chunk("answer")});
  dispatch->dispatchAction(addAction("{text}"));
  waitUntilShown({"the selection", "answer", false, std::nullopt});
}

TEST_F(ActionDispatchTest, PressingAgainWhileTheKeyringIsSilentAsksItOnceAndRunsTheLatestAction) {
  platform.secretStore().setSilent(true);
  platform.httpClient().expect(200, {chunk("answer")});
  dispatch->dispatchAction(addAction("first {text}"));
  platform.secretStore().waitForCallers();
  const auto asked = platform.secretStore().count(testing::FakeSecretStore::Operation::CopyMatching);
  dispatch->dispatchAction(addAction("second {text}"));
  mainQueue.runPending();
  EXPECT_EQ(platform.secretStore().count(testing::FakeSecretStore::Operation::CopyMatching), asked);
  EXPECT_EQ(popup.panel(), nullptr);
  platform.secretStore().setSilent(false);
  waitUntilShown({"the selection", "answer", false, std::nullopt});
  EXPECT_EQ(sentPrompt(0), "second the selection");
}

TEST_F(ActionDispatchTest, WithoutTrustTheAlertIsShownAndTheRunningActionGoesOn) {
  const auto exchange = platform.httpClient().expect();
  exchange->respond(200).push(chunk("answer"));
  dispatch->dispatchAction(addAction("{text}"));
  waitUntilShown({"the selection", "answer", true, std::nullopt});
  platform.accessibilityTrust().trusted = false;
  dispatch->dispatchAction(addAction("{text}"));
  waitUntil([&] { return alerts == 1; });
  EXPECT_FALSE(exchange->isClosed());
  EXPECT_EQ(shown(), (Shown{"the selection", "answer", true, std::nullopt}));
}

TEST_F(ActionDispatchTest, WithoutTrustNoPopupOpens) {
  platform.accessibilityTrust().trusted = false;
  dispatch->dispatchAction(addAction("{text}"));
  waitUntil([&] { return alerts == 1; });
  mainQueue.runPending();
  EXPECT_EQ(popup.panel(), nullptr);
}

TEST_F(ActionDispatchTest, TheNetworkIsPreparedWhileTheTextIsCaptured) {
  dispatch->dispatchAction(addAction("{text}"));
  waitUntil([&] { return shown().originalText == "Getting text..."; });
  EXPECT_TRUE(platform.httpClient().isPrepared());
  EXPECT_THAT(platform.httpClient().requests(), IsEmpty());
}

TEST_F(ActionDispatchTest, AFailedCaptureShowsItsMessage) {
  platform.pasteboard().setNextCopy(std::nullopt);
  dispatch->dispatchAction(addAction("{text}"));
  waitUntilShown({"", std::nullopt, false, LumiwrenError::noTextSelected().errorDescription()});
}

TEST_F(ActionDispatchTest, AnErrorDuringStreamingEmptiesTheOriginalTextAndEndsLoading) {
  const auto exchange = platform.httpClient().expect();
  exchange->respond(200).push(chunk("half an ans"));
  dispatch->dispatchAction(addAction("{text}"));
  waitUntilShown({"the selection", "half an ans", true, std::nullopt});
  exchange->fail("The connection broke off.");
  waitUntilShown({"", std::nullopt, false, "The connection broke off."});
}

TEST_F(ActionDispatchTest, ARefusalByTheServerShowsItsStatus) {
  platform.httpClient().expect(401);
  dispatch->dispatchAction(addAction("{text}"));
  waitUntilShown({"", std::nullopt, false, "API error: HTTP 401"});
}

class CaptureActionTest : public ActionDispatchTest {
protected:
  void dispatchCapture(const std::string &prompt = "{text}") {
    dispatch->dispatchAction(addAction(prompt, CustomAction::InputType::ScreenCapture));
  }
  void waitForTool(std::size_t count = 1) {
    waitUntil([&] { return platform.childProcesses().launched.size() == count; });
  }
  /// The user draws a rectangle.
  void draw(std::size_t number = 0) {
    std::ofstream(platform.childProcesses().launched.at(number).arguments.at(2)) << "\x89PNG\r\n\x1a\n...";
    platform.childProcesses().end(number);
  }
};

TEST_F(CaptureActionTest, TheRecognisedTextIsShownAndAnswered) {
  platform.textRecognizer().setLines({"two", "lines"});
  const auto exchange = platform.httpClient().expect();
  dispatchCapture("Explain: {text}");
  waitForTool();
  mainQueue.runPending();
  EXPECT_EQ(popup.panel(), nullptr);
  draw();
  platform.textRecognizer().setSilent(true);
  waitUntilShown({"Extracting text from image...", std::nullopt, true, std::nullopt});
  EXPECT_NE(popup.panel(), nullptr);
  platform.textRecognizer().setSilent(false);
  waitUntilShown({"two\nlines", std::nullopt, true, std::nullopt});
  exchange->respond(200).push(chunk("answer")).end();
  waitUntilShown({"two\nlines", "answer", false, std::nullopt});
  EXPECT_EQ(sentPrompt(0), "Explain: two\nlines");
  EXPECT_EQ(platform.selectionCopy().copies, 0);
}

TEST_F(CaptureActionTest, TheEngineAndTheNetworkLoadWhileTheUserDraws) {
  dispatchCapture();
  waitForTool();
  EXPECT_EQ(platform.textRecognizer().prepareCount(), 1U);
  EXPECT_TRUE(platform.httpClient().isPrepared());
}

TEST_F(CaptureActionTest, WithoutAKeyTheMessageIsShownAndNothingIsCapturedOrProbed) {
  keychain.deleteAPIKey();
  platform.screenRecording().allowed = false;
  dispatchCapture();
  waitUntilShown(
      {"", std::nullopt, false, "API key not configured. Click the menu bar icon to set up your API key."});
  EXPECT_EQ(platform.screenRecording().probes, 0);
  EXPECT_EQ(recordingAlerts, 0);
  EXPECT_THAT(platform.childProcesses().launched, IsEmpty());
}

TEST_F(CaptureActionTest, WithoutPermissionTheAlertIsShownAndTheRunningActionGoesOn) {
  const auto exchange = platform.httpClient().expect();
  exchange->respond(200).push(chunk("answer"));
  dispatch->dispatchAction(addAction("{text}"));
  waitUntilShown({"the selection", "answer", true, std::nullopt});
  platform.screenRecording().allowed = false;
  dispatchCapture();
  waitUntil([&] { return recordingAlerts == 1; });
  EXPECT_FALSE(exchange->isClosed());
  EXPECT_EQ(alerts, 0);
  EXPECT_THAT(platform.childProcesses().launched, IsEmpty());
  EXPECT_EQ(platform.textRecognizer().prepareCount(), 0U);
}

TEST_F(CaptureActionTest, NeedsNoPermissionToCopy) {
  platform.accessibilityTrust().trusted = false;
  dispatchCapture();
  waitForTool();
  EXPECT_EQ(alerts, 0);
}

TEST_F(CaptureActionTest, ACaptureCancelsTheRunningAction) {
  const auto exchange = platform.httpClient().expect();
  exchange->respond(200).push(chunk("answer"));
  dispatch->dispatchAction(addAction("{text}"));
  waitUntilShown({"the selection", "answer", true, std::nullopt});
  dispatchCapture();
  waitForTool();
  exchange->waitUntilClosed();
}

TEST_F(CaptureActionTest, ACancelledCaptureShowsNothingAndLeavesNoTask) {
  dispatchCapture();
  waitForTool();
  platform.childProcesses().end();
  mainQueue.runPending();
  EXPECT_EQ(popup.panel(), nullptr);
  EXPECT_THAT(platform.imageDecoder().images(), IsEmpty());
  EXPECT_THAT(platform.httpClient().requests(), IsEmpty());
}

TEST_F(CaptureActionTest, AToolThatCannotBeStartedShowsNothing) {
  platform.childProcesses().canLaunch = false;
  dispatchCapture();
  waitUntil([&] { return platform.screenRecording().probes == 1; });
  mainQueue.runPending();
  EXPECT_EQ(popup.panel(), nullptr);
}

TEST_F(CaptureActionTest, ARegionWithoutTextSaysSo) {
  dispatchCapture();
  waitForTool();
  draw();
  waitUntilShown({"", std::nullopt, false, "No text found in the selected region."});
  EXPECT_THAT(platform.httpClient().requests(), IsEmpty());
}

TEST_F(CaptureActionTest, APictureThatCannotBeDecodedSaysSo) {
  platform.imageDecoder().show(std::nullopt);
  dispatchCapture();
  waitForTool();
  draw();
  waitUntilShown({"", std::nullopt, false, "Could not process the captured image."});
}

TEST_F(CaptureActionTest, AFailureOfTheRecognitionSaysWhy) {
  platform.textRecognizer().setError("A part is missing.");
  dispatchCapture();
  waitForTool();
  draw();
  waitUntilShown({"", std::nullopt, false, "OCR error: A part is missing."});
}

TEST_F(CaptureActionTest, AnErrorDuringStreamingEmptiesTheOriginalText) {
  platform.textRecognizer().setLines({"text"});
  platform.httpClient().expect(500);
  dispatchCapture();
  waitForTool();
  draw();
  waitUntilShown({"", std::nullopt, false, "API error: HTTP 500"});
}

TEST_F(CaptureActionTest, ANewActionCancelsTheRecognition) {
  platform.textRecognizer().setSilent(true);
  dispatchCapture();
  waitForTool();
  draw();
  waitUntilShown({"Extracting text from image...", std::nullopt, true, std::nullopt});
  platform.textRecognizer().waitForCallers();
  platform.httpClient().expect(200, {chunk("answer")});
  dispatch->dispatchAction(addAction("{text}"));
  waitUntilShown({"the selection", "answer", false, std::nullopt});
  EXPECT_EQ(platform.httpClient().requests().size(), 1U);
}

TEST_F(CaptureActionTest, ACaptureThatEndsAfterTheDispatchShowsNothing) {
  dispatchCapture();
  waitForTool();
  dispatch.reset();
  draw();
  mainQueue.runPending();
  EXPECT_EQ(popup.panel(), nullptr);
  EXPECT_TRUE(std::filesystem::is_empty(captureFolder.path()));
}

TEST_F(ActionDispatchTest, WhatComesAfterTheDispatchsEndShowsNothing) {
  platform.secretStore().setSilent(true);
  dispatch->dispatchAction(addAction("{text}"));
  platform.secretStore().waitForCallers();
  dispatch.reset();
  platform.secretStore().setSilent(false);
  EXPECT_TRUE(Task::endAll(patience));
  mainQueue.runPending();
  EXPECT_EQ(popup.panel(), nullptr);
}

}  // namespace
}  // namespace lumiwren
