#include "ui/SheetHost.h"

#include "ui/Motion.h"
#include "ui/Rendering.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDeadlineTimer>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

#include <functional>
#include <memory>

namespace lumiwren {
namespace {

class Content : public QWidget {
public:
  Content() {
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(field);
    layout->addWidget(button);
    setFocusProxy(field);
  }
  QSize sizeHint() const override { return hint; }

  QSize hint{200, 100};
  QLineEdit *const field = new QLineEdit;
  QPushButton *const button = new QPushButton(QStringLiteral("Button"));
};

class SheetHostTest : public ::testing::Test {
protected:
  SheetHostTest() {
    setReducesMotion(true);
    window.resize(400, 300);
    below->setGeometry(10, 10, 80, 30);
    window.show();
    window.activateWindow();
    below->setFocus();
    QCoreApplication::processEvents();
  }
  ~SheetHostTest() override { setReducesMotion(false); }

  Content &present() {
    auto content = std::make_unique<Content>();
    auto &result = *content;
    host.present(std::move(content));
    QCoreApplication::processEvents();
    return result;
  }
  static bool becomes(const std::function<bool()> &condition) {
    const QDeadlineTimer deadline(std::chrono::seconds(30));
    while (!condition() && !deadline.hasExpired()) {
      QCoreApplication::processEvents();
    }
    return condition();
  }
  QRect inWindow(const QWidget &widget) { return {widget.mapTo(&window, QPoint()), widget.size()}; }
  static void press(Qt::Key key) {
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
    QApplication::sendEvent(QApplication::focusWidget(), &event);
  }

  QWidget window;
  QPushButton *const below = new QPushButton(QStringLiteral("Below"), &window);
  SheetHost host{&window};
};

TEST_F(SheetHostTest, ShowsTheContentInTheMiddleWithTheKeyboard) {
  EXPECT_FALSE(host.isPresenting());
  EXPECT_FALSE(host.isVisible());
  const auto &content = present();
  EXPECT_TRUE(host.isPresenting());
  EXPECT_EQ(inWindow(content), QRect(100, 100, 200, 100));
  EXPECT_TRUE(content.field->hasFocus());
}

TEST_F(SheetHostTest, FollowsTheSizeOfWhatItCoversAndOfTheContent) {
  auto &content = present();
  window.resize(500, 400);
  QCoreApplication::processEvents();
  EXPECT_EQ(inWindow(content), QRect(150, 150, 200, 100));
  content.hint = {300, 1000};
  content.updateGeometry();
  QCoreApplication::processEvents();
  EXPECT_EQ(inWindow(content).x(), 100);
  EXPECT_LT(content.height(), 400);
}

TEST_F(SheetHostTest, NeitherPointerNorTabReachWhatIsBelow) {
  const auto &content = present();
  EXPECT_NE(window.childAt(below->geometry().center()), below);
  press(Qt::Key_Tab);
  EXPECT_TRUE(content.button->hasFocus());
  press(Qt::Key_Tab);
  EXPECT_TRUE(content.field->hasFocus());
  press(Qt::Key_Backtab);
  EXPECT_TRUE(content.button->hasFocus());
}

TEST_F(SheetHostTest, ThePointerReachesWhatIsBelowWhileTheSheetSlidesOut) {
  setReducesMotion(false);
  present();
  host.dismiss();
  EXPECT_TRUE(host.isVisible());
  EXPECT_EQ(window.childAt(below->geometry().center()), below);
  present();
  EXPECT_NE(window.childAt(below->geometry().center()), below);
}

TEST_F(SheetHostTest, SaysThatEscapeWasPressed) {
  present();
  int escaped = 0;
  QObject::connect(&host, &SheetHost::escaped, &host, [&escaped] { ++escaped; });
  press(Qt::Key_Escape);
  EXPECT_EQ(escaped, 1);
  EXPECT_TRUE(host.isPresenting());
}

TEST_F(SheetHostTest, GivesTheKeyboardBackAndEndsTheContent) {
  QPointer<Content> content(&present());
  host.dismiss();
  EXPECT_FALSE(host.isPresenting());
  EXPECT_FALSE(host.isVisible());
  EXPECT_FALSE(content->isVisible());
  EXPECT_TRUE(below->hasFocus());
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(content.isNull());
}

TEST_F(SheetHostTest, TheContentMayDismissItself) {
  auto &content = present();
  QObject::connect(content.button, &QPushButton::clicked, &host, [this] { host.dismiss(); });
  content.button->click();
  EXPECT_FALSE(host.isPresenting());
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(host.findChildren<QPushButton *>().isEmpty());
}

TEST_F(SheetHostTest, WhoeverIsGoneGetsNoKeyboardBack) {
  present();
  delete below;
  host.dismiss();
  EXPECT_FALSE(host.isVisible());
}

TEST_F(SheetHostTest, DimsWhatIsBelowButNotWhatIsTransparent) {
  QImage before = testing::rendered(window, 1);
  EXPECT_EQ(qAlpha(before.pixel(399, 299)), 0);
  before = testing::rendered(window, 1, Qt::white);
  const QRgb corner = before.pixel(399, 299);
  present();
  EXPECT_EQ(qAlpha(testing::rendered(window, 1).pixel(399, 299)), 0);
  EXPECT_LT(qGray(testing::rendered(window, 1, Qt::white).pixel(399, 299)), qGray(corner));
}

TEST_F(SheetHostTest, SlidesInAndOutUnlessTheUserWantsNoMotion) {
  setReducesMotion(false);
  const auto &content = present();
  EXPECT_TRUE(content.field->hasFocus());
  EXPECT_LT(inWindow(content).y(), 100);
  EXPECT_TRUE(becomes([&] { return inWindow(content).y() == 100; }));
  host.dismiss();
  EXPECT_FALSE(host.isPresenting());
  EXPECT_TRUE(host.isVisible());
  EXPECT_TRUE(becomes([this] { return !host.isVisible(); }));
}

TEST_F(SheetHostTest, ASheetMayComeWhileTheLastOneIsStillSlidingOut) {
  setReducesMotion(false);
  present();
  host.dismiss();
  const auto &second = present();
  EXPECT_TRUE(becomes([&] { return inWindow(second).y() == 100; }));
  host.dismiss();
  EXPECT_TRUE(below->hasFocus());
}

TEST_F(SheetHostTest, NothingMovesInAHiddenWindow) {
  setReducesMotion(false);
  const auto &content = present();
  window.hide();
  EXPECT_EQ(inWindow(content).y(), 100);
  host.dismiss();
  EXPECT_TRUE(host.isHidden());
}

}  // namespace
}  // namespace lumiwren
