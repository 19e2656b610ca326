#include "settings/FirstLaunchAPIKeyView.h"

#include "settings/FormTesting.h"
#include "ui/SymbolView.h"

#include <gtest/gtest.h>

#include <QLayout>

#include <memory>

namespace lumiwren {
namespace {

class FirstLaunchAPIKeyViewTest : public testing::FormTest {
protected:
  void test() {
    button(*view, "Test Connection").click();
    EXPECT_TRUE(runUntil([&] { return !view->form().isTesting(); }));
    settle();
  }

  std::unique_ptr<FirstLaunchAPIKeyView> view =
      std::make_unique<FirstLaunchAPIKeyView>(services, workspace, dismiss);
};

TEST_F(FirstLaunchAPIKeyViewTest, WithAnEmptyFieldBothButtonsAreDisabled) {
  EXPECT_FALSE(button(*view, "Test Connection").isEnabled());
  EXPECT_FALSE(button(*view, "Save & Continue").isEnabled());
  type(*view, "sk-new");
  EXPECT_TRUE(button(*view, "Test Connection").isEnabled());
  EXPECT_TRUE(button(*view, "Save & Continue").isEnabled());
  type(*view, "");
  EXPECT_FALSE(button(*view, "Test Connection").isEnabled());
  EXPECT_FALSE(button(*view, "Save & Continue").isEnabled());
}

TEST_F(FirstLaunchAPIKeyViewTest, HasNeitherCancelNorRemove) {
  keychain.saveAPIKey(Secret::copyOf("sk-stored"));
  settle();
  EXPECT_EQ(findButton(*view, "Cancel"), nullptr);
  EXPECT_EQ(findButton(*view, "Remove Key"), nullptr);
}

TEST_F(FirstLaunchAPIKeyViewTest, DoesNotShowAStoredKey) {
  keychain.saveAPIKey(Secret::copyOf("sk-stored"));
  settle();
  EXPECT_TRUE(view->form().isEmpty());
}

TEST_F(FirstLaunchAPIKeyViewTest, SaveAndContinueStoresTheKeyAndCloses) {
  type(*view, " sk-new");
  button(*view, "Save & Continue").click();
  EXPECT_TRUE(runUntil([&] { return dismissals == 1; }));
  EXPECT_EQ(storedKey(), " sk-new");
}

TEST_F(FirstLaunchAPIKeyViewTest, ARefusedKeyLeavesTheFormOpen) {
  store.setAddsFail(true);
  type(*view, "sk-new");
  button(*view, "Save & Continue").click();
  settle();
  EXPECT_EQ(dismissals, 0);
  EXPECT_FALSE(view->form().testResult());
}

TEST_F(FirstLaunchAPIKeyViewTest, ATestFailedWithStatus401LeavesTheTypedKeyStored) {
  http.expect(401);
  type(*view, "sk-new");
  test();
  EXPECT_NE(label(*view, QStringLiteral("Connection failed")), nullptr);
  EXPECT_EQ(storedKey(), "sk-new");
}

TEST_F(FirstLaunchAPIKeyViewTest, ATestFailedWithANetworkErrorLeavesTheTypedKeyStored) {
  keychain.saveAPIKey(Secret::copyOf("sk-stored"));
  http.expectFailure("The network is down.");
  type(*view, "sk-new");
  test();
  EXPECT_NE(label(*view, QStringLiteral("The network is down.")), nullptr);
  EXPECT_EQ(storedKey(), "sk-new");
}

TEST_F(FirstLaunchAPIKeyViewTest, ClosedDuringATestTheTypedKeyStays) {
  const auto exchange = http.expect();
  type(*view, "sk-new");
  button(*view, "Test Connection").click();
  http.waitForRequests(1);
  view.reset();
  exchange->fail("down");
  EXPECT_TRUE(Task::endAll(std::chrono::seconds(10)));
  mainQueue.runPending();
  EXPECT_EQ(storedKey(), "sk-new");
}

TEST_F(FirstLaunchAPIKeyViewTest, TheLinkOpensThePageWithTheKeys) {
  button(*view, "Get an API key from OpenAI").click();
  EXPECT_EQ(workspace.opened, std::vector<std::string>{"https://platform.openai.com/api-keys"});
}

TEST_F(FirstLaunchAPIKeyViewTest, TheEyeHasNoToolTip) {
  auto &eye = button(*view, "Show API Key");
  EXPECT_EQ(eye.toolTip(), QString());
  eye.click();
  EXPECT_EQ(eye.toolTip(), QString());
  EXPECT_FALSE(field(*view).isMasked());
}

TEST_F(FirstLaunchAPIKeyViewTest, IsLaidOutAsStated) {
  view->resize(view->sizeHint().width(), view->layout()->totalHeightForWidth(450));
  view->show();
  EXPECT_EQ(view->width(), 450);
  const auto place = [&](QWidget *widget) {
    return QRect(widget->mapTo(view.get(), QPoint()), widget->size());
  };
  TextLabel *const title = label(*view, QStringLiteral("Welcome to Lumiwren"));
  TextLabel *const explanation = label(
      *view, QStringLiteral("To get started, enter your OpenAI API key. This key is stored securely in "
                            "your macOS Keychain and is only used to communicate with the OpenAI API."));
  TextLabel *const keyLabel = label(*view, QStringLiteral("API Key"));
  ASSERT_NE(explanation, nullptr);
  EXPECT_EQ(title->font().pixelSize(), 22);
  EXPECT_EQ(title->font().weight(), QFont::DemiBold);
  EXPECT_EQ(keyLabel->font().pixelSize(), 12);
  EXPECT_EQ(keyLabel->font().weight(), QFont::Medium);
  const QRect book = place(view->findChild<SymbolView *>());
  EXPECT_EQ(book.size(), QSize(48, 48));
  EXPECT_EQ(book.top(), 32);
  EXPECT_NEAR(book.center().x(), 225, 1);
  EXPECT_NEAR(place(title).center().x(), 225, 1);
  EXPECT_TRUE(explanation->alignment().testFlag(Qt::AlignHCenter));
  EXPECT_GE(explanation->height(), explanation->heightForWidth(explanation->width()));
  EXPECT_EQ(place(keyLabel).top() - place(explanation).bottom() - 1, 24);
  EXPECT_EQ(place(keyLabel).left(), 32);
  const QRect link = place(&button(*view, "Get an API key from OpenAI"));
  EXPECT_EQ(button(*view, "Get an API key from OpenAI").font().pixelSize(), 11);
  const QRect save = place(&button(*view, "Save & Continue"));
  EXPECT_EQ(save.top() - link.bottom() - 1, 24);
  EXPECT_EQ(save.bottom(), view->height() - 32 - 1);
}

}  // namespace
}  // namespace lumiwren
