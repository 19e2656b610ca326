#include "ai/KeychainManager.h"
#include "ai/OpenAIAPIService.h"
#include "base/MainQueue.h"
#include "base/Task.h"
#include "platform/KeyCodes.h"
#include "platform/linux/x11/X11PanelWindows.h"
#include "platform/testing/FakeEventMonitors.h"
#include "platform/testing/FakeHTTPClient.h"
#include "platform/testing/FakePasteboard.h"
#include "platform/testing/FakeScreens.h"
#include "platform/testing/FakeSecretStore.h"
#include "platform/x11/panel/XDesktop.h"
#include "popup/ExplanationPopupController.h"
#include "popup/ExplanationPopupView.h"
#include "popup/KeyablePanel.h"
#include "ui/MainQueueLoop.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QColor>
#include <QLineEdit>
#include <QPalette>
#include <QPushButton>
#include <QSocketNotifier>

#include <cstdlib>
#include <memory>
#include <string>

namespace lumiwren {
namespace {

using testing::waitFor;
using testing::XDesktop;

constexpr QRgb panelColor = 0x2040c0;
constexpr std::uint32_t returnKey = 0xff0d;

Handle watchReadable(int fileDescriptor, std::function<void()> readable) {
  auto notifier = std::make_shared<QSocketNotifier>(fileDescriptor, QSocketNotifier::Read);
  QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), std::move(readable));
  return Handle([notifier] { notifier->setEnabled(false); });
}

XDesktop *desktop = nullptr;
xcb_window_t application = XCB_NONE;  // the other application's window, as the window manager knows it
xcb_window_t applicationFocus = XCB_NONE;

class X11Panel : public ::testing::Test {
protected:
  void SetUp() override {
    desktop->moveTo(100, 700);
    ASSERT_TRUE(waitFor([] { return desktop->focused() == applicationFocus; }));
    keychain.saveAPIKey(Secret::copyOf("key"));
    screens.pointer = {200, 700};
    screens.visibleFrame = Rect{{0, 0}, {XDesktop::width, XDesktop::height}};
    controller.prepare();
  }
  void TearDown() override {
    controller.dismiss();
    EXPECT_TRUE(waitFor([this] { return !controller.panel(); }));
    EXPECT_TRUE(waitFor([] { return desktop->focused() == applicationFocus; }));
    Task::endAll(std::chrono::seconds(10));
  }

  void show() {
    controller.show("source", "An **answer** to read.", false, std::nullopt);
    controller.updateContent("source", "An **answer** to read.", false, std::nullopt);
    ASSERT_TRUE(waitFor([this] {
      if (!controller.panel()) {
        return false;
      }
      // A busy compositor may pass over the first picture of a window that comes back in another size.
      controller.panel()->update();
      return isSeen();
    }));
  }
  /// Whether the panel's own colour is on the screen, where its header is.
  bool isSeen() {
    const QPoint place = controller.hostingView()->mapToGlobal(QPoint(100, 6));
    const QColor seen(desktop->pixel(place.x(), place.y()));
    const QColor own(panelColor);
    return std::abs(seen.red() - own.red()) < 24 && std::abs(seen.green() - own.green()) < 24 &&
           std::abs(seen.blue() - own.blue()) < 24;
  }
  void click(const QWidget &part) {
    const QPoint place = part.mapToGlobal(part.rect().center());
    desktop->click(place.x(), place.y());
  }
  QPushButton &button(const char *name) {
    for (auto *const candidate : controller.panel()->findChildren<QPushButton *>()) {
      if (candidate->accessibleName() == QLatin1String(name) || candidate->text() == QLatin1String(name)) {
        return *candidate;
      }
    }
    throw std::runtime_error(std::string("no button ") + name);
  }
  QLineEdit &field() { return *controller.panel()->findChild<QLineEdit *>(); }
  void takeKeyboard() {
    click(field());
    ASSERT_TRUE(waitFor([this] {
      return desktop->focused() == controller.panel()->winId() && field().hasFocus();
    })) << "The focus is at "
        << desktop->focused() << ", the panel is " << controller.panel()->winId()
        << ", the application's focus was " << applicationFocus
        << ", the panel may be key: " << controller.panel()->allowsKeyStatus()
        << ", the pointer is over the field: " << field().underMouse();
  }

  MainQueue queue;
  MainQueueLoop loop{queue};
  testing::FakeEventMonitors monitors;
  testing::FakePasteboard pasteboard;
  testing::FakeScreens screens;
  testing::FakeHTTPClient http;
  testing::FakeSecretStore store;
  X11PanelWindows windows{qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection(), 1,
                          watchReadable};
  KeychainManager keychain{store};
  OpenAIAPIService service{http, keychain, queue, {}};
  ExplanationPopupController controller{monitors, pasteboard, screens, windows, service, keychain, queue};
};

TEST_F(X11Panel, LeavesTheFocusToTheOtherApplicationWhenShownAndWhenItsButtonsAreClicked) {
  show();
  EXPECT_EQ(desktop->focused(), applicationFocus);
  click(button("Copy Result"));
  ASSERT_TRUE(waitFor([this] { return pasteboard.puts().size() == 1; }));
  EXPECT_EQ(desktop->focused(), applicationFocus);
  EXPECT_FALSE(controller.panel()->allowsKeyStatus());
  click(button("Close"));
  EXPECT_TRUE(waitFor([this] { return !controller.panel(); }));
  EXPECT_EQ(desktop->focused(), applicationFocus);
  EXPECT_EQ(desktop->active(), application);
}

TEST_F(X11Panel, LeavesTheFocusWhereItIsWhileThePointerIsOverIt) {
  show();
  auto &part = button("Copy Result");
  const QPoint place = part.mapToGlobal(part.rect().center());
  desktop->moveTo(place.x(), place.y());
  ASSERT_TRUE(waitFor([&] { return part.underMouse(); }));
  EXPECT_EQ(desktop->focused(), applicationFocus);
}

TEST_F(X11Panel, IsAboveAWindowThatBecomesFullScreenAndAboveOneThatIs) {
  const auto isFullScreen = [] { return desktop->pixel(XDesktop::width - 3, 3) == 0x108010; };
  show();
  EXPECT_FALSE(isFullScreen());
  desktop->setFullScreen(application, true);
  ASSERT_TRUE(waitFor(isFullScreen));
  EXPECT_TRUE(waitFor([this] { return isSeen(); }));  // A compositor draws the two one after the other.
  controller.dismiss();
  ASSERT_TRUE(waitFor([this] { return !controller.panel(); }));
  show();
  EXPECT_TRUE(isFullScreen());
  EXPECT_EQ(desktop->focused(), applicationFocus);
  desktop->setFullScreen(application, false);
  EXPECT_TRUE(waitFor([&] { return !isFullScreen(); }));
}

TEST_F(X11Panel, IsOnEveryDesktop) {
  const auto isApplicationSeen = [] { return desktop->pixel(100, 700) == 0x108010; };
  desktop->setDesktopCount(2);
  ASSERT_TRUE(waitFor(isApplicationSeen));
  show();
  desktop->setCurrentDesktop(1);
  ASSERT_TRUE(waitFor([&] { return desktop->currentDesktop() == 1 && !isApplicationSeen(); }));
  EXPECT_TRUE(waitFor([this] { return isSeen(); }));
  desktop->setCurrentDesktop(0);
  ASSERT_TRUE(waitFor([&] { return desktop->currentDesktop() == 0 && isApplicationSeen(); }));
  EXPECT_TRUE(waitFor([this] { return isSeen(); }));
}

TEST_F(X11Panel, AClickIntoTheFollowUpFieldGivesItTheKeyboardAndDismissalGivesItBack) {
  const auto exchange = http.expect();
  show();
  takeKeyboard();
  EXPECT_TRUE(controller.panel()->allowsKeyStatus());
  desktop->key('w');
  desktop->key('h');
  desktop->key('y');
  ASSERT_TRUE(waitFor([this] { return field().text() == QLatin1String("why"); }));
  desktop->key(returnKey);
  ASSERT_TRUE(waitFor([this] { return http.requests().size() == 1; }));
  EXPECT_EQ(controller.popupState().conversationHistory().at(1).content, "why");
  EXPECT_EQ(field().text(), QString());
  exchange->respond(200).end();
  ASSERT_TRUE(waitFor([this] { return !controller.popupState().isLoading(); }));
  EXPECT_EQ(desktop->focused(), controller.panel()->winId());

  controller.dismiss();
  EXPECT_TRUE(waitFor([] { return desktop->focused() == applicationFocus; }));
  EXPECT_TRUE(waitFor([] { return desktop->active() == application; }));
}

TEST_F(X11Panel, AnotherApplicationThatIsClickedWhileThePanelHasTheKeyboardKeepsIt) {
  const auto other = desktop->startApplication("30x10+800+500", "#801080");
  const auto otherFocus = desktop->focused();
  desktop->click(100, 700);
  ASSERT_TRUE(waitFor([] { return desktop->focused() == applicationFocus; }));
  show();
  takeKeyboard();
  desktop->click(860, 560);
  controller.dismiss();
  ASSERT_TRUE(waitFor([this] { return !controller.panel(); }));
  EXPECT_TRUE(waitFor([&] { return desktop->focused() == otherFocus; }));
  desktop->click(100, 700);
  EXPECT_TRUE(waitFor([&] { return desktop->focused() == applicationFocus; }));
}

TEST_F(X11Panel, IsShownAtThePointerInItsDefaultSizeWhateverTheOneBeforeItWas) {
  show();
  EXPECT_EQ(controller.panel()->frame(), (Rect{{210, 390}, {400, 300}}));
  controller.panel()->setFrame({{500, 100}, {640, 480}});
  ASSERT_TRUE(waitFor([this] { return controller.panel()->frame() == (Rect{{500, 100}, {640, 480}}); }));
  ASSERT_TRUE(waitFor([this] { return controller.hostingView()->size() == QSize(640, 480); }));
  field().setText(QStringLiteral("typed"));
  takeKeyboard();
  controller.dismiss();
  ASSERT_TRUE(waitFor([this] { return !controller.panel(); }));
  screens.pointer = {300, 600};
  show();
  EXPECT_EQ(controller.panel()->frame(), (Rect{{310, 290}, {400, 300}}));
  EXPECT_FALSE(controller.panel()->allowsKeyStatus());
  EXPECT_EQ(field().text(), QString());
}

TEST_F(X11Panel, IsMovedByItsBackgroundAndResizedByItsEdges) {
  show();
  const QPoint corner = controller.hostingView()->mapToGlobal(QPoint());
  desktop->moveTo(corner.x() + 60, corner.y() + 7);
  desktop->press();
  desktop->moveTo(corner.x() + 100, corner.y() + 20);
  desktop->moveTo(corner.x() + 160, corner.y() + 57);
  desktop->release();
  EXPECT_TRUE(waitFor([this] { return controller.panel()->frame() == (Rect{{310, 340}, {400, 300}}); }));
  EXPECT_EQ(controller.hostingView()->mapToGlobal(QPoint()), corner + QPoint(100, 50));

  const QPoint end = controller.hostingView()->mapToGlobal(QPoint(395, 295));
  desktop->moveTo(end.x(), end.y());
  desktop->press();
  desktop->moveTo(end.x() + 20, end.y() + 10);
  desktop->moveTo(end.x() + 100, end.y() + 50);
  desktop->release();
  EXPECT_TRUE(waitFor([this] { return controller.panel()->frame() == (Rect{{310, 290}, {500, 350}}); }));
  EXPECT_EQ(desktop->focused(), applicationFocus);
}

TEST_F(X11Panel, AClickInsideItsFrameLeavesItAndOneOutsideTakesItAway) {
  show();
  ASSERT_TRUE(waitFor([this] { return monitors.globalMonitorCount() == 2; }));  // half a second later
  const Rect frame = controller.panel()->frame();
  screens.pointer = {frame.minX() + 5, frame.minY() + 5};
  monitors.pressElsewhere({EventKind::LeftMouseDown});
  queue.post([] {});
  QCoreApplication::processEvents();
  EXPECT_TRUE(controller.panel());
  screens.pointer = {frame.maxX() + 5, frame.minY() + 5};
  monitors.pressElsewhere({EventKind::LeftMouseDown});
  EXPECT_TRUE(waitFor([this] { return !controller.panel(); }));
}

}  // namespace
}  // namespace lumiwren

int main(int argc, char **argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (argc != 2) {
    fprintf(stderr, "usage: test_x11_panel WINDOW-MANAGER\n");
    return 2;
  }
  lumiwren::testing::XDesktop desktop(argv[1]);
  const auto application = desktop.startApplication("80x20+20+480", "#108010");
  lumiwren::desktop = &desktop;
  lumiwren::application = desktop.active();
  lumiwren::applicationFocus = desktop.focused();
  setenv("DISPLAY", desktop.display().c_str(), 1);
  setenv("QT_QPA_PLATFORM", "xcb", 1);
  QApplication app(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  QPalette palette;
  palette.setColor(QPalette::Window, QColor(lumiwren::panelColor));
  palette.setColor(QPalette::WindowText, Qt::white);
  QApplication::setPalette(palette);
  return RUN_ALL_TESTS();
}
