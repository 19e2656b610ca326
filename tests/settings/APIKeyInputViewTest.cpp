#include "settings/APIKeyInputView.h"

#include "settings/FormTesting.h"
#include "ui/ProgressIndicator.h"
#include "ui/SymbolButton.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QFontInfo>
#include <QLayout>

#include <memory>
#include <string>

namespace lumiwren {
namespace {

using Operation = testing::FakeSecretStore::Operation;

const QString failed = QStringLiteral("Connection failed");
const QString successful = QStringLiteral("Connection successful!");

class APIKeyInputViewTest : public testing::FormTest {
protected:
  APIKeyInputView &show() {
    view_ = std::make_unique<APIKeyInputView>(services, dismiss);
    return *view_;
  }
  APIKeyInputView &showWithStoredKey(const char *key) {
    keychain.saveAPIKey(Secret::copyOf(key));
    auto &view = show();
    settle();
    return view;
  }
  /// Presses the button to test and waits for the end, that of the restoring included.
  void test(APIKeyInputView &view) {
    button(view, "Test Connection").click();
    EXPECT_TRUE(runUntil([&] { return !view.form().isTesting(); }));
    settle();
  }
  static bool hasRemoveButton(const APIKeyInputView &view) {
    return button(view, "Remove Key").isVisibleTo(&view);
  }

  std::unique_ptr<APIKeyInputView> view_;
};

TEST_F(APIKeyInputViewTest, StartsWithTheStoredKeyMasked) {
  auto &view = showWithStoredKey("sk-stored");
  EXPECT_EQ(field(view).secret(), Secret::copyOf("sk-stored"));
  EXPECT_TRUE(field(view).isMasked());
  EXPECT_FALSE(view.form().testResult());
  EXPECT_FALSE(view.form().isTesting());
  EXPECT_TRUE(hasRemoveButton(view));
}

TEST_F(APIKeyInputViewTest, StartsEmptyWithoutAStoredKey) {
  auto &view = show();
  settle();
  EXPECT_TRUE(view.form().isEmpty());
  EXPECT_FALSE(hasRemoveButton(view));
  EXPECT_EQ(field(view).placeholderText(), QStringLiteral("sk-..."));
}

TEST_F(APIKeyInputViewTest, TheEyeShowsAndHidesTheKey) {
  auto &view = showWithStoredKey("sk-stored");
  auto &eye = button(view, "Show API Key");
  EXPECT_EQ(eye.toolTip(), QStringLiteral("Show API Key"));
  eye.click();
  EXPECT_EQ(field(view).displayText(), QStringLiteral("sk-stored"));
  EXPECT_EQ(eye.accessibleName(), QStringLiteral("Hide API Key"));
  EXPECT_EQ(eye.toolTip(), QStringLiteral("Hide API Key"));
  EXPECT_TRUE(QFontInfo(field(view).font()).fixedPitch());
  eye.click();
  EXPECT_TRUE(field(view).isMasked());
  EXPECT_EQ(eye.toolTip(), QStringLiteral("Show API Key"));
}

TEST_F(APIKeyInputViewTest, WithAnEmptyFieldTheTestIsDisabledButSaveStoresAnEmptyKey) {
  auto &view = show();
  settle();
  EXPECT_FALSE(button(view, "Test Connection").isEnabled());
  EXPECT_TRUE(button(view, "Save").isEnabled());
  button(view, "Save").click();
  EXPECT_TRUE(runUntil([&] { return dismissals == 1; }));
  EXPECT_EQ(storedKey(), "");
  EXPECT_TRUE(http.requests().empty());
}

TEST_F(APIKeyInputViewTest, SaveStoresTheTextExactlyAsTypedAndCloses) {
  auto &view = show();
  settle();
  type(view, "  sk-\xe2\x82\xac ");
  button(view, "Save").click();
  EXPECT_TRUE(runUntil([&] { return dismissals == 1; }));
  EXPECT_EQ(storedKey(), "  sk-\xe2\x82\xac ");
}

TEST_F(APIKeyInputViewTest, ARefusedKeyLeavesTheFormOpenWithoutAMessage) {
  auto &view = show();
  settle();
  store.setAddsFail(true);
  type(view, "sk-new");
  button(view, "Save").click();
  settle();
  EXPECT_EQ(dismissals, 0);
  EXPECT_FALSE(view.form().testResult());
  EXPECT_EQ(field(view).secret(), Secret::copyOf("sk-new"));
  store.setAddsFail(false);
  button(view, "Save").click();
  EXPECT_TRUE(runUntil([&] { return dismissals == 1; }));
}

TEST_F(APIKeyInputViewTest, CancelClosesAndSavesNothing) {
  auto &view = showWithStoredKey("sk-stored");
  type(view, "sk-new");
  button(view, "Cancel").click();
  EXPECT_EQ(dismissals, 1);
  settle();
  EXPECT_EQ(storedKey(), "sk-stored");
}

TEST_F(APIKeyInputViewTest, RemoveKeyDisappearsAfterRemoval) {
  auto &view = showWithStoredKey("sk-stored");
  http.expect(401);
  test(view);
  EXPECT_TRUE(view.form().testResult());
  button(view, "Remove Key").click();
  EXPECT_TRUE(view.form().isEmpty());
  EXPECT_FALSE(view.form().testResult());
  settle();
  EXPECT_FALSE(hasRemoveButton(view));
  EXPECT_EQ(storedKey(), std::nullopt);
  EXPECT_EQ(dismissals, 0);
}

TEST_F(APIKeyInputViewTest, RemoveKeyStaysWhereTheKeyringRefuses) {
  auto &view = showWithStoredKey("sk-stored");
  store.setRemovesFail(true);
  button(view, "Remove Key").click();
  EXPECT_FALSE(button(view, "Remove Key").isEnabled()) << "while it is being removed";
  settle();
  EXPECT_TRUE(hasRemoveButton(view));
  EXPECT_TRUE(button(view, "Remove Key").isEnabled());
  EXPECT_TRUE(view.form().isEmpty());
}

TEST_F(APIKeyInputViewTest, ASuccessfulTestSaysSoAndKeepsTheTypedKey) {
  auto &view = showWithStoredKey("sk-stored");
  http.expect(200, {"{}"});
  type(view, "sk-new");
  test(view);
  EXPECT_NE(label(view, successful), nullptr);
  EXPECT_EQ(view.form().testResult(), (TestResult{TestResult::Case::Success, ""}));
  EXPECT_EQ(storedKey(), "sk-new");
  ASSERT_EQ(http.requests().size(), 1U);
  EXPECT_EQ(http.requests()[0].headers[0].value, Secret::copyOf("Bearer sk-new"));
}

TEST_F(APIKeyInputViewTest, ATestFailedWithStatus401LeavesTheTypedKeyStored) {
  auto &view = showWithStoredKey("sk-stored");
  http.expect(401);
  type(view, "sk-new");
  test(view);
  EXPECT_NE(label(view, failed), nullptr);
  EXPECT_EQ(storedKey(), "sk-new");
}

TEST_F(APIKeyInputViewTest, ATestFailedWithANetworkErrorRestoresThePreviousKey) {
  auto &view = showWithStoredKey("sk-stored");
  http.expectFailure("The network <b>&is</b> down.");
  type(view, "sk-new");
  test(view);
  EXPECT_NE(label(view, QStringLiteral("The network <b>&is</b> down.")), nullptr);
  EXPECT_EQ(storedKey(), "sk-stored");
  EXPECT_EQ(field(view).secret(), Secret::copyOf("sk-new"));
  EXPECT_TRUE(hasRemoveButton(view));
}

TEST_F(APIKeyInputViewTest, ATestFailedWithANetworkErrorRemovesTheKeyIfNoneWasStored) {
  auto &view = show();
  settle();
  http.expectFailure("down");
  type(view, "sk-new");
  test(view);
  EXPECT_EQ(storedKey(), std::nullopt);
  EXPECT_FALSE(hasRemoveButton(view));
}

TEST_F(APIKeyInputViewTest, ATestWhoseKeyCannotBeStoredReportsThatThereIsNone) {
  auto &view = show();
  settle();
  store.setAddsFail(true);
  type(view, "sk-new");
  test(view);
  EXPECT_NE(
      label(view, QStringLiteral("API key not configured. Please set your OpenAI API key in settings.")),
      nullptr);
  EXPECT_TRUE(http.requests().empty());
}

TEST_F(APIKeyInputViewTest, WhileATestRunsAWheelTurnsAndNoOtherIsStarted) {
  auto &view = show();
  settle();
  const auto exchange = http.expect();
  type(view, "sk-new");
  button(view, "Test Connection").click();
  http.waitForRequests(1);
  auto &testButton = button(view, "Test Connection");
  EXPECT_FALSE(testButton.isEnabled());
  EXPECT_NE(testButton.findChild<ProgressIndicator *>(), nullptr);
  testButton.click();
  type(view, "sk-other");
  EXPECT_FALSE(testButton.isEnabled()) << "typing enables it during the test";
  exchange->respond(200).end();
  EXPECT_TRUE(runUntil([&] { return !view.form().isTesting(); }));
  EXPECT_TRUE(testButton.isEnabled());
  EXPECT_EQ(testButton.findChild<ProgressIndicator *>(), nullptr);
  EXPECT_EQ(http.requests().size(), 1U);
}

TEST_F(APIKeyInputViewTest, TheNextTestClearsTheResultOfTheLast) {
  auto &view = show();
  settle();
  http.expect(401);
  type(view, "sk-new");
  test(view);
  EXPECT_NE(label(view, failed), nullptr);
  const auto exchange = http.expect();
  button(view, "Test Connection").click();
  EXPECT_EQ(label(view, failed), nullptr);
  exchange->respond(200).end();
  EXPECT_TRUE(runUntil([&] { return label(view, successful) != nullptr; }));
}

TEST_F(APIKeyInputViewTest, TheResultIsShownBeforeTheKeyIsRestored) {
  auto &view = showWithStoredKey("sk-stored");
  const auto exchange = http.expect();
  type(view, "sk-new");
  button(view, "Test Connection").click();
  http.waitForRequests(1);
  store.setSilent(true);
  exchange->fail("down");
  EXPECT_TRUE(runUntil([&] { return label(view, QStringLiteral("down")) != nullptr; }));
  EXPECT_FALSE(view.form().isTesting());
  store.setSilent(false);
  settle();
  EXPECT_EQ(storedKey(), "sk-stored");
}

TEST_F(APIKeyInputViewTest, ClosedDuringATestTheOldKeyIsRestoredAllTheSame) {
  auto &view = showWithStoredKey("sk-stored");
  const auto exchange = http.expect();
  type(view, "sk-new");
  button(view, "Test Connection").click();
  http.waitForRequests(1);
  EXPECT_EQ(storedKey(), "sk-new");
  view_.reset();
  exchange->fail("down");
  EXPECT_TRUE(runUntil([&] { return storedKey() == "sk-stored"; }));
}

TEST_F(APIKeyInputViewTest, ClosedDuringATestTheTestRunsOn) {
  auto &view = show();
  settle();
  const auto exchange = http.expect();
  type(view, "sk-new");
  button(view, "Test Connection").click();
  http.waitForRequests(1);
  view_.reset();
  mainQueue.runPending();
  EXPECT_FALSE(exchange->isClosed());
  exchange->respond(200).end();
  exchange->waitUntilClosed();
  settle();
  EXPECT_EQ(storedKey(), "sk-new");
}

TEST_F(APIKeyInputViewTest, ASilentKeyringDoesNotHoldUpTheForm) {
  keychain.saveAPIKey(Secret::copyOf("sk-stored"));
  store.setSilent(true);
  auto &view = show();
  store.waitForCallers();
  mainQueue.runPending();
  EXPECT_TRUE(view.form().isEmpty());
  EXPECT_FALSE(hasRemoveButton(view));
  button(view, "Cancel").click();
  EXPECT_EQ(dismissals, 1);
  view_.reset();
  store.setSilent(false);
  settle();
  EXPECT_EQ(storedKey(), "sk-stored");
}

TEST_F(APIKeyInputViewTest, SavingBeforeTheStoredKeyIsThereDoesNotLoseIt) {
  keychain.saveAPIKey(Secret::copyOf("sk-stored"));
  store.setSilent(true);
  auto &view = show();
  store.waitForCallers();
  button(view, "Save").click();
  store.setSilent(false);
  EXPECT_TRUE(runUntil([&] { return dismissals == 1; }));
  EXPECT_EQ(storedKey(), "sk-stored");
}

TEST_F(APIKeyInputViewTest, WhatIsTypedBeforeTheStoredKeyIsThereStays) {
  keychain.saveAPIKey(Secret::copyOf("sk-stored"));
  store.setSilent(true);
  auto &view = show();
  store.waitForCallers();
  type(view, "sk-new");
  store.setSilent(false);
  settle();
  EXPECT_EQ(field(view).secret(), Secret::copyOf("sk-new"));
  EXPECT_TRUE(hasRemoveButton(view));
}

TEST_F(APIKeyInputViewTest, ImpatientSavingStoresOnce) {
  auto &view = show();
  settle();
  type(view, "sk-new");
  store.setSilent(true);
  for (int press = 0; press < 5; ++press) {
    button(view, "Save").click();
  }
  store.setSilent(false);
  EXPECT_TRUE(runUntil([&] { return dismissals > 0; }));
  settle();
  EXPECT_EQ(dismissals, 1);
  EXPECT_EQ(store.count(Operation::Add), 1U);
}

TEST_F(APIKeyInputViewTest, ClosedWhileItSavesTheKeyIsStored) {
  auto &view = show();
  settle();
  type(view, "sk-new");
  store.setSilent(true);
  button(view, "Save").click();
  view_.reset();
  store.setSilent(false);
  settle();
  EXPECT_EQ(storedKey(), "sk-new");
  EXPECT_EQ(dismissals, 0);
}

TEST_F(APIKeyInputViewTest, IsLaidOutAsStated) {
  auto &view = showWithStoredKey("sk-stored");
  http.expect(401);
  test(view);
  view.resize(view.sizeHint().width(), view.layout()->totalHeightForWidth(400));
  view.show();
  EXPECT_EQ(view.width(), 400);
  const auto place = [&](QWidget *widget) { return QRect(widget->mapTo(&view, QPoint()), widget->size()); };
  TextLabel *const title = label(view, QStringLiteral("OpenAI API Key"));
  TextLabel *const explanation =
      label(view, QStringLiteral("Enter your OpenAI API key to use Lumiwren. Your key is stored securely in "
                                 "the macOS Keychain."));
  ASSERT_NE(title, nullptr);
  ASSERT_NE(explanation, nullptr);
  EXPECT_EQ(title->font().pixelSize(), 13);
  EXPECT_EQ(title->font().weight(), QFont::DemiBold);
  EXPECT_EQ(explanation->font().pixelSize(), 11);
  EXPECT_EQ(label(view, failed)->font().pixelSize(), 11);
  EXPECT_EQ(place(title).topLeft(), QPoint(24, 24));
  const QRect key = place(&field(view));
  const QRect eye = place(&button(view, "Show API Key"));
  const QRect result = place(label(view, failed));
  const QRect testing = place(&button(view, "Test Connection"));
  const QRect remove = place(&button(view, "Remove Key"));
  const QRect cancel = place(&button(view, "Cancel"));
  const QRect save = place(&button(view, "Save"));
  EXPECT_EQ(key.top() - place(explanation).bottom() - 1, 20);
  EXPECT_EQ(key.left(), 24);
  EXPECT_EQ(eye.right(), 400 - 24 - 1);
  EXPECT_GE(result.top() - key.bottom() - 1, 20);
  EXPECT_GE(testing.top() - result.bottom() - 1, 20);
  EXPECT_EQ(remove.left(), 24);
  EXPECT_EQ(save.right(), 400 - 24 - 1);
  EXPECT_LT(cancel.right(), save.left());
  EXPECT_EQ(remove.top() - testing.bottom() - 1, 20 + 1 + 20);
  EXPECT_EQ(save.bottom(), view.height() - 24 - 1);
}

}  // namespace
}  // namespace lumiwren
