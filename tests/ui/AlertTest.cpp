#include "ui/Alert.h"

#include "ui/Keyboard.h"
#include "ui/TextLabel.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QMetaObject>
#include <QPointer>

#include <functional>
#include <optional>

namespace lumiwren {
namespace {

using testing::pressKey;
using Role = Alert::Role;

const QString message = QStringLiteral("Delete <b>&Action</b>");
const QString informative = QStringLiteral("This cannot be undone. <i>&Really</i>");

class AlertTest : public ::testing::Test {
protected:
  Alert::Activation activation() {
    return {.activate =
                [this](QWidget &window) {
                  activated_ = &window;
                  wasVisible_ = window.isVisible();
                },
            .handOver = [this](QWidget &window) { handOver_(window); }};
  }
  /// What the alert answers when this is done to it.
  static int answerTo(Alert &alert, const std::function<void()> &action) {
    QMetaObject::invokeMethod(&alert, action, Qt::QueuedConnection);
    return alert.run();
  }
  static void press(Alert &alert, int key) {
    pressKey(alert.focusWidget() != nullptr ? *alert.focusWidget() : alert, key);
  }
  static PushButton &button(Alert &alert, const QString &label) {
    for (auto *const each : alert.findChildren<PushButton *>()) {
      if (each->text() == label) {
        return *each;
      }
    }
    throw std::runtime_error("no such button");
  }

  QWidget *activated_ = nullptr;
  bool wasVisible_ = false;
  std::function<void(QWidget &)> handOver_ = [](QWidget &) {};
};

TEST_F(AlertTest, ReturnPressesTheDefaultAndEscapeCancels) {
  for (const auto &[key, expected] : {std::pair{Qt::Key_Return, 0}, {Qt::Key_Escape, 1}}) {
    Alert alert(message, informative, activation());
    alert.addButton(QStringLiteral("Open"), Role::Default);
    alert.addButton(QStringLiteral("Later"), Role::Cancel);
    EXPECT_EQ(answerTo(alert, [&alert, pressed = key] { press(alert, pressed); }), expected);
  }
}

TEST_F(AlertTest, NeitherReturnNorEscapeNorClosingDestroysAnything) {
  const std::function<void(Alert &)> actions[] = {[](Alert &alert) { press(alert, Qt::Key_Return); },
                                                  [](Alert &alert) { press(alert, Qt::Key_Escape); },
                                                  [](Alert &alert) { alert.close(); }};
  for (const auto &action : actions) {
    Alert alert(message, informative, activation());
    alert.addButton(QStringLiteral("Delete"), Role::Destructive);
    const int cancel = alert.addButton(QStringLiteral("Cancel"), Role::Cancel);
    EXPECT_EQ(answerTo(alert, [&] { action(alert); }), cancel);
  }
}

TEST_F(AlertTest, AClickAnswers) {
  Alert alert(message, informative, activation());
  const int destroy = alert.addButton(QStringLiteral("Delete"), Role::Destructive);
  alert.addButton(QStringLiteral("Cancel"), Role::Cancel);
  EXPECT_EQ(answerTo(alert, [&] { button(alert, QStringLiteral("Delete")).click(); }), destroy);
}

TEST_F(AlertTest, ClosedWithoutACancelItAnswersNone) {
  Alert alert(message, informative, activation());
  alert.addButton(QStringLiteral("OK"), Role::Default);
  EXPECT_EQ(answerTo(alert, [&] { alert.close(); }), -1);
}

TEST_F(AlertTest, TheFirstButtonIsTheRightmost) {
  Alert alert(message, informative, activation());
  alert.addButton(QStringLiteral("Open"), Role::Default);
  alert.addButton(QStringLiteral("Later"), Role::Cancel);
  answerTo(alert, [&] {
    const QRect open = button(alert, QStringLiteral("Open")).geometry();
    const QRect later = button(alert, QStringLiteral("Later")).geometry();
    EXPECT_GT(open.left(), later.right());
    EXPECT_EQ(open.right(), alert.width() - 20 - 1);
    alert.close();
  });
}

TEST_F(AlertTest, IsModalAboveOthersAndMadeKeyWhenItIsShown) {
  Alert alert(message, informative, activation());
  alert.addButton(QStringLiteral("OK"), Role::Default);
  answerTo(alert, [&] {
    EXPECT_EQ(activated_, &alert);
    EXPECT_TRUE(wasVisible_);
    EXPECT_EQ(QApplication::activeModalWidget(), &alert);
    EXPECT_TRUE(alert.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    alert.close();
  });
}

TEST_F(AlertTest, ItsTextsAreTextsAndKnownToAssistiveTechnology) {
  Alert alert(message, informative, activation());
  auto *const accessible = QAccessible::queryAccessibleInterface(&alert);
  EXPECT_EQ(accessible->role(), QAccessible::Dialog);
  EXPECT_EQ(accessible->text(QAccessible::Name), message);
  EXPECT_EQ(accessible->text(QAccessible::Description), informative);
  for (const auto *const label : alert.findChildren<TextLabel *>()) {
    EXPECT_EQ(label->textFormat(), Qt::PlainText);
  }
}

TEST_F(AlertTest, ALongTextIsShownInFull) {
  Alert alert(message, informative.repeated(20), activation());
  alert.addButton(QStringLiteral("OK"), Role::Default);
  answerTo(alert, [&] {
    for (const auto *const label : alert.findChildren<TextLabel *>()) {
      EXPECT_GE(label->height(), label->heightForWidth(label->width()));
      EXPECT_TRUE(alert.rect().contains(QRect(label->mapTo(&alert, QPoint()), label->size())));
    }
    alert.close();
  });
}

TEST_F(AlertTest, AskedOfOneWindowItAnswersLaterAndIsGone) {
  QWidget window;
  window.show();
  std::optional<int> answer;
  auto *const alert = new Alert(message, informative, activation(), &window);
  const QPointer<Alert> watched(alert);
  const int destroy = alert->addButton(QStringLiteral("Delete"), Role::Destructive);
  alert->addButton(QStringLiteral("Cancel"), Role::Cancel);
  alert->ask([&](int index) { answer = index; });
  EXPECT_EQ(alert->windowModality(), Qt::WindowModal);
  EXPECT_FALSE(answer);
  button(*alert, QStringLiteral("Delete")).click();
  EXPECT_EQ(answer, destroy);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_FALSE(watched);
}

TEST_F(AlertTest, TheWindowThatAskedGetsTheKeyboardBeforeTheAlertGoesAndIsBroughtToTheFrontAfterwards) {
  QWidget window;
  window.show();
  auto *const alert = new Alert(message, informative, activation(), &window);
  alert->addButton(QStringLiteral("Cancel"), Role::Cancel);
  bool handedOver = false;
  handOver_ = [&](QWidget &asking) {
    handedOver = true;
    EXPECT_EQ(&asking, &window);
    EXPECT_TRUE(alert->isVisible());
    EXPECT_EQ(activated_, alert);
  };
  alert->ask([&](int) { EXPECT_TRUE(handedOver); });
  alert->activateWindow();
  QCoreApplication::processEvents();
  ASSERT_TRUE(alert->isActiveWindow());
  button(*alert, QStringLiteral("Cancel")).click();
  EXPECT_TRUE(handedOver);
  EXPECT_EQ(activated_, &window);
}

TEST_F(AlertTest, AnAlertWithoutTheKeyboardTakesItForNobody) {
  QWidget window;
  window.show();
  auto *const alert = new Alert(message, informative, activation(), &window);
  alert->addButton(QStringLiteral("Cancel"), Role::Cancel);
  handOver_ = [](QWidget &) { ADD_FAILURE() << "the user is somewhere else"; };
  alert->ask([](int) {});
  QWidget other;
  other.show();
  other.activateWindow();
  QCoreApplication::processEvents();
  ASSERT_TRUE(other.isActiveWindow());
  ASSERT_FALSE(alert->isActiveWindow());
  button(*alert, QStringLiteral("Cancel")).click();
  EXPECT_EQ(activated_, alert);
}

}  // namespace
}  // namespace lumiwren
