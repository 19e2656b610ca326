#include "ui/InputGuard.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QWindow>

#include <cstdint>

namespace lumiwren {
namespace {

class ClicksSeen : public QObject {
public:
  bool eventFilter(QObject * /*watched*/, QEvent *event) override {
    presses += event->type() == QEvent::MouseButtonPress ? 1 : 0;
    doubleClicks += event->type() == QEvent::MouseButtonDblClick ? 1 : 0;
    return false;
  }

  int presses = 0;
  int doubleClicks = 0;
};

class InputGuardTest : public ::testing::Test {
protected:
  InputGuardTest() {
    new InputGuard(window);
    window.resize(300, 200);
    for (auto *const button : {first, second}) {
      button->setGeometry(10, 10, 80, 30);
    }
    second->hide();
    QObject::connect(first, &QPushButton::clicked, [this] {
      first->hide();
      second->show();
    });
    QObject::connect(field, &QLineEdit::returnPressed, [this] { ++returns; });
    field->move(10, 60);
    area->setGeometry(10, 100, 200, 60);
    window.show();
    window.activateWindow();
    QCoreApplication::processEvents();
  }

  void mouse(QEvent::Type type) {
    const QPointF place(20, 20);
    const auto buttons = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, place, window.mapToGlobal(place), Qt::LeftButton, buttons, Qt::NoModifier);
    QCoreApplication::sendEvent(window.windowHandle(), &event);
  }
  void key(QEvent::Type type, Qt::Key key, std::uint64_t time, bool repeated = false) {
    QKeyEvent event(type, key, Qt::NoModifier, QString(QLatin1Char('\n')), repeated);
    event.setTimestamp(time);
    QCoreApplication::sendEvent(window.windowHandle(), &event);
  }

  QWidget window;
  QPushButton *const second = new QPushButton(QStringLiteral("Second"), &window);
  QPushButton *const first = new QPushButton(QStringLiteral("First"), &window);
  QLineEdit *const field = new QLineEdit(&window);
  QPlainTextEdit *const area = new QPlainTextEdit(&window);
  int returns = 0;
};

TEST_F(InputGuardTest, TheSecondClickOfADoubleClickIsNotForAnotherControl) {
  ClicksSeen seen;
  second->installEventFilter(&seen);
  mouse(QEvent::MouseButtonPress);
  mouse(QEvent::MouseButtonRelease);
  EXPECT_TRUE(second->isVisible());
  mouse(QEvent::MouseButtonDblClick);
  mouse(QEvent::MouseButtonRelease);
  EXPECT_EQ(seen.doubleClicks, 0);
  mouse(QEvent::MouseButtonPress);
  mouse(QEvent::MouseButtonRelease);
  EXPECT_EQ(seen.presses, 1);
  mouse(QEvent::MouseButtonDblClick);
  EXPECT_EQ(seen.doubleClicks, 1);
}

TEST_F(InputGuardTest, ClicksWithAKeyBetweenThemAreClicks) {
  ClicksSeen seen;
  second->installEventFilter(&seen);
  mouse(QEvent::MouseButtonPress);
  mouse(QEvent::MouseButtonRelease);
  key(QEvent::KeyRelease, Qt::Key_K, 1000);
  mouse(QEvent::MouseButtonDblClick);
  EXPECT_EQ(seen.doubleClicks, 1);
}

TEST_F(InputGuardTest, ReturnThatIsHeldDecidesOnce) {
  field->setFocus();
  key(QEvent::KeyPress, Qt::Key_Return, 1000);
  key(QEvent::KeyRelease, Qt::Key_Return, 1500, true);
  key(QEvent::KeyPress, Qt::Key_Return, 1500, true);
  // What the toolkit tells of a repeat whose halves it has seen one at a time.
  key(QEvent::KeyRelease, Qt::Key_Return, 1540);
  key(QEvent::KeyPress, Qt::Key_Return, 1540);
  EXPECT_EQ(returns, 1);
  key(QEvent::KeyRelease, Qt::Key_Return, 1600);
  key(QEvent::KeyPress, Qt::Key_Return, 1700);
  EXPECT_EQ(returns, 2);
}

TEST_F(InputGuardTest, ReturnThatIsHeldEndsLinesAndOtherKeysRepeat) {
  area->setFocus();
  key(QEvent::KeyPress, Qt::Key_Return, 1000);
  key(QEvent::KeyPress, Qt::Key_Return, 1500, true);
  EXPECT_EQ(area->toPlainText(), QStringLiteral("\n\n"));
  key(QEvent::KeyPress, Qt::Key_Backspace, 2000);
  key(QEvent::KeyPress, Qt::Key_Backspace, 2500, true);
  EXPECT_TRUE(area->toPlainText().isEmpty());
}

}  // namespace
}  // namespace lumiwren
