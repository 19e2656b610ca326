#include "settings/FormWindow.h"

#include "settings/APIKeyWindow.h"
#include "settings/FormTesting.h"
#include "settings/WelcomeWindow.h"
#include "ui/Fonts.h"
#include "ui/Keyboard.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QPointer>
#include <QScreen>

namespace lumiwren {
namespace {

using testing::pressKey;

class FormWindowTest : public testing::FormTest {
protected:
  ~FormWindowTest() override { setTextScale(1); }

  static void endDeleted() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }
  static QStringList tabOrder(QWidget &window) {
    QStringList names;
    for (auto *widget = window.nextInFocusChain(); widget != &window; widget = widget->nextInFocusChain()) {
      if ((widget->focusPolicy() & Qt::TabFocus) != 0 && widget->isVisibleTo(&window)) {
        names << widget->accessibleName();
      }
    }
    return names;
  }

  WelcomeWindow welcome{services, workspace, windows};
  APIKeyWindow keyWindow{services, windows};
};

TEST_F(FormWindowTest, TheWelcomeIsACentredTitledWindowInFront) {
  welcome.showWindow();
  FormWindow &window = *welcome.window();
  EXPECT_TRUE(window.isVisible());
  EXPECT_EQ(window.windowTitle(), QStringLiteral("Welcome to Lumiwren"));
  EXPECT_EQ(window.width(), 450);
  EXPECT_GE(window.height(), 400);
  EXPECT_TRUE(window.windowFlags().testFlag(Qt::WindowCloseButtonHint));
  EXPECT_FALSE(window.windowFlags().testFlag(Qt::WindowMinimizeButtonHint));
  EXPECT_EQ(windows.activated, std::vector<NativeWindow>{window.winId()});
  const QPoint middle = QGuiApplication::primaryScreen()->availableGeometry().center();
  EXPECT_NEAR((window.pos() + window.rect().center()).x(), middle.x(), 1);
  EXPECT_NEAR((window.pos() + window.rect().center()).y(), middle.y(), 1);
}

TEST_F(FormWindowTest, ASmallFormIsInTheMiddleOfALargerWindow) {
  FormWindow window(QStringLiteral("Title"), std::make_unique<QWidget>(), 400, windows);
  window.present();
  EXPECT_EQ(window.height(), 400);
  setTextScale(1.5);
  QCoreApplication::processEvents();
  EXPECT_EQ(window.height(), 600);
}

TEST_F(FormWindowTest, ShownWhileItIsOpenItOnlyComesForward) {
  keyWindow.showWindow();
  const FormWindow *const window = keyWindow.window();
  type(*window, "sk-new");
  keyWindow.showWindow();
  EXPECT_EQ(keyWindow.window(), window);
  EXPECT_EQ(windows.activated.size(), 2U);
  EXPECT_FALSE(field(*window).text().isEmpty());
}

TEST_F(FormWindowTest, ClosedItIsGoneAndTheNextShowingIsAFreshOne) {
  keyWindow.showWindow();
  const QPointer<FormWindow> first(keyWindow.window());
  type(*first, "sk-new");
  button(*first, "Show API Key").click();
  first->close();
  EXPECT_EQ(keyWindow.window(), nullptr);
  endDeleted();
  EXPECT_FALSE(first);
  keyWindow.showWindow();
  settle();
  EXPECT_TRUE(field(*keyWindow.window()).text().isEmpty());
  EXPECT_TRUE(field(*keyWindow.window()).isMasked());
}

TEST_F(FormWindowTest, ReturnSavesAndEscapeCancels) {
  keyWindow.showWindow();
  settle();
  type(*keyWindow.window(), "sk-new");
  pressKey(field(*keyWindow.window()), Qt::Key_Return);
  EXPECT_TRUE(runUntil([&] { return keyWindow.window() == nullptr; }));
  EXPECT_EQ(storedKey(), "sk-new");
  endDeleted();

  keyWindow.showWindow();
  settle();
  type(*keyWindow.window(), "sk-other");
  pressKey(field(*keyWindow.window()), Qt::Key_Escape);
  EXPECT_EQ(keyWindow.window(), nullptr);
  settle();
  EXPECT_EQ(storedKey(), "sk-new");
}

TEST_F(FormWindowTest, ClosedWhileTheKeyIsSavedNothingIsClosedTwice) {
  welcome.showWindow();
  type(*welcome.window(), "sk-new");
  store.setSilent(true);
  button(*welcome.window(), "Save & Continue").click();
  welcome.window()->close();
  endDeleted();
  welcome.showWindow();
  store.setSilent(false);
  settle();
  EXPECT_EQ(storedKey(), "sk-new");
  EXPECT_NE(welcome.window(), nullptr) << "the next showing was closed by the last one's saving";
}

TEST_F(FormWindowTest, DroppedWhileOpenDuringATestNothingIsTouchedAfterwards) {
  const auto exchange = http.expect();
  {
    APIKeyWindow temporary(services, windows);
    temporary.showWindow();
    settle();
    type(*temporary.window(), "sk-new");
    button(*temporary.window(), "Test Connection").click();
    http.waitForRequests(1);
  }
  exchange->fail("down");
  EXPECT_TRUE(runUntil([&] { return storedKey() == std::nullopt; }));
}

TEST_F(FormWindowTest, TheKeyboardIsInTheFieldAndTabGoesFromTopToBottom) {
  keychain.saveAPIKey(Secret::copyOf("sk-stored"));
  keyWindow.showWindow();
  settle();
  EXPECT_EQ(keyWindow.window()->focusWidget(), &field(*keyWindow.window()));
  EXPECT_EQ(tabOrder(*keyWindow.window()),
            (QStringList{QStringLiteral("API Key"), QStringLiteral("Show API Key"),
                         QStringLiteral("Test Connection"), QStringLiteral("Remove Key"),
                         QStringLiteral("Cancel"), QStringLiteral("Save")}));
  welcome.showWindow();
  EXPECT_EQ(welcome.window()->focusWidget(), &field(*welcome.window()));
  EXPECT_EQ(tabOrder(*welcome.window()),
            (QStringList{QStringLiteral("API Key"), QStringLiteral("Show API Key"),
                         QStringLiteral("Get an API key from OpenAI"), QStringLiteral("Test Connection"),
                         QStringLiteral("Save & Continue")}));
}

TEST_F(FormWindowTest, AButtonThatIsDisabledLeavesTheKeyboardToTheField) {
  keychain.saveAPIKey(Secret::copyOf("sk-stored"));
  keyWindow.showWindow();
  settle();
  FormWindow &window = *keyWindow.window();
  const auto exchange = http.expect();
  auto &testButton = button(window, "Test Connection");
  testButton.setFocus();
  pressKey(testButton, Qt::Key_Space);
  EXPECT_FALSE(testButton.isEnabled());
  EXPECT_EQ(window.focusWidget(), &field(window));
  exchange->respond(200).end();
  EXPECT_TRUE(runUntil([&] { return testButton.isEnabled(); }));
  auto &remove = button(window, "Remove Key");
  remove.setFocus();
  pressKey(remove, Qt::Key_Space);
  EXPECT_EQ(window.focusWidget(), &field(window));
}

TEST_F(FormWindowTest, GrowsForTheResultAndShowsALongOneInFull) {
  keyWindow.showWindow();
  settle();
  FormWindow &window = *keyWindow.window();
  const int before = window.height();
  http.expect(401);
  type(window, "sk-new");
  button(window, "Test Connection").click();
  EXPECT_TRUE(runUntil([&] { return label(window, QStringLiteral("Connection failed")) != nullptr; }));
  QCoreApplication::processEvents();
  const int withOneLine = window.height();
  EXPECT_GT(withOneLine, before);
  const QString message = QStringLiteral("Could not resolve the host of a rather long name. ").repeated(4);
  http.expectFailure(message.toStdString());
  button(window, "Test Connection").click();
  EXPECT_TRUE(runUntil([&] { return label(window, message) != nullptr; }));
  const TextLabel *const result = label(window, message);
  EXPECT_GE(result->height(), result->heightForWidth(result->width()));
  EXPECT_EQ(window.height(), withOneLine + result->height() - result->fontMetrics().height());
  EXPECT_EQ(window.width(), 400);
}

TEST_F(FormWindowTest, NothingIsCutOffInLargeText) {
  for (const double scale : {1.0, 1.5, 2.0}) {
    setTextScale(scale);
    welcome.showWindow();
    keyWindow.showWindow();
    settle();
    for (FormWindow *const window : {welcome.window(), keyWindow.window()}) {
      QCoreApplication::processEvents();
      for (auto *const each : window->findChildren<TextLabel *>()) {
        if (each->isVisible()) {
          const int needed =
              each->wordWrap() ? each->heightForWidth(each->width()) : each->sizeHint().height();
          EXPECT_GE(each->height(), needed) << each->text().toStdString() << " at " << scale;
          EXPECT_TRUE(window->rect().contains(QRect(each->mapTo(window, QPoint()), each->size())));
        }
      }
      for (auto *const each : window->findChildren<PushButton *>()) {
        EXPECT_TRUE(!each->isVisible() || each->width() >= each->sizeHint().width())
            << each->text().toStdString() << " at " << scale;
      }
      window->close();
    }
    endDeleted();
  }
}

}  // namespace
}  // namespace lumiwren
