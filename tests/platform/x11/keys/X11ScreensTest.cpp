#include "platform/linux/x11/X11Screens.h"

#include "platform/x11/keys/InputDriver.h"
#include "support/XServer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace lumiwren::testing {
namespace {

class X11ScreensTest : public ::testing::Test {
protected:
  X11ScreensTest() { setenv("DISPLAY", server_.display().c_str(), 1); }

  void splitScreen() {
    for (const char *monitor : {"LEFT 800/200x600/150+0+0 screen", "*RIGHT 480/120x500/125+800+100 none"}) {
      std::vector<std::string> command{"xrandr", "--setmonitor"};
      std::string rest = monitor;
      for (std::size_t start = 0; start < rest.size();) {
        const auto end = std::min(rest.find(' ', start), rest.size());
        command.push_back(rest.substr(start, end - start));
        start = end + 1;
      }
      Process process(Process::Options{.command = command, .environment = server_.environment()});
      ASSERT_EQ(process.wait(), 0);
    }
  }

  XServer server_{XServer::Options{.width = 1280, .height = 800}};
};

void setNumbers(const TestWindow &owner, X11Connection &connection, xcb_window_t window, const char *name,
                const std::vector<std::uint32_t> &values) {
  const auto atom = connection.atom(connection.askAtom(name));
  xcb_change_property(connection.get(), XCB_PROP_MODE_REPLACE, window, atom, XCB_ATOM_CARDINAL, 32,
                      static_cast<std::uint32_t>(values.size()), values.data());
  owner.finish();
}

TEST_F(X11ScreensTest, PositionsAreInPointsFromTheBottomLeft) {
  const X11Connection connection;
  InputDriver user;
  user.moveTo(100, 200);
  EXPECT_EQ(X11Screens(connection, 1).mouseLocation(), (Point{100, 600}));
  EXPECT_EQ(X11Screens(connection, 2).mouseLocation(), (Point{50, 300}));
  EXPECT_EQ(X11Screens(connection, 1).mainScreenVisibleFrame(), (Rect{{0, 0}, {1280, 800}}));
  EXPECT_EQ(X11Screens(connection, 2).mainScreenVisibleFrame(), (Rect{{0, 0}, {640, 400}}));
}

TEST_F(X11ScreensTest, ThePrimaryMonitorHasTheOriginAndTheFocusedWindowMakesTheMainOne) {
  splitScreen();
  const X11Connection connection;
  X11Screens screens(connection, 1);
  InputDriver user;
  // Primary is the right one: 480 x 500 at (800, 100).
  EXPECT_EQ(screens.mainScreenVisibleFrame(), (Rect{{0, 0}, {480, 500}}));
  user.moveTo(0, 0);
  EXPECT_EQ(screens.mouseLocation(), (Point{-800, 600}));
  user.moveTo(900, 600);
  EXPECT_EQ(screens.mouseLocation(), (Point{100, 0}));

  TestWindow window(TestWindow::Options{.x = 10, .y = 10});
  window.takeFocus();
  EXPECT_EQ(screens.mainScreenVisibleFrame(), (Rect{{-800, 0}, {800, 600}}));
}

TEST_F(X11ScreensTest, AFocusInsideAWindowCountsAsThatWindow) {
  splitScreen();
  const X11Connection connection;
  X11Screens screens(connection, 1);
  TestWindow window(TestWindow::Options{.x = 10, .y = 10});
  const xcb_window_t proxy = xcb_generate_id(window.connection().get());
  xcb_create_window(window.connection().get(), 0, proxy, window.id(), -1, -1, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
  xcb_map_window(window.connection().get(), proxy);
  window.finish();
  InputDriver().setFocus(proxy);
  EXPECT_EQ(screens.mainScreenVisibleFrame(), (Rect{{-800, 0}, {800, 600}}));
}

TEST_F(X11ScreensTest, DocksAreLeftOut) {
  const X11Connection connection;
  X11Screens screens(connection, 1);
  TestWindow dock(TestWindow::Options{.width = 1280, .height = 30});
  TestWindow older(TestWindow::Options{.y = 760, .width = 1280, .height = 40});
  setNumbers(dock, dock.connection(), dock.id(), "_NET_WM_STRUT_PARTIAL",
             {0, 0, 30, 0, 0, 0, 0, 0, 0, 1279, 0, 0});
  setNumbers(older, older.connection(), older.id(), "_NET_WM_STRUT", {0, 0, 0, 40});
  setNumbers(dock, dock.connection(), connection.root(), "_NET_CLIENT_LIST", {dock.id(), older.id(), 0xdead});
  EXPECT_EQ(screens.mainScreenVisibleFrame(), (Rect{{0, 40}, {1280, 730}}));
}

TEST_F(X11ScreensTest, WithoutDocksTheWorkAreaOfTheCurrentDesktopCounts) {
  const X11Connection connection;
  X11Screens screens(connection, 1);
  const TestWindow manager;
  X11Connection writer;
  setNumbers(manager, writer, connection.root(), "_NET_WORKAREA", {0, 0, 1280, 800, 10, 20, 1000, 700});
  setNumbers(manager, writer, connection.root(), "_NET_CURRENT_DESKTOP", {1});
  const XReply<xcb_get_input_focus_reply_t> done(
      xcb_get_input_focus_reply(writer.get(), xcb_get_input_focus(writer.get()), nullptr));
  EXPECT_EQ(screens.mainScreenVisibleFrame(), (Rect{{10, 80}, {1000, 700}}));
}

TEST(X11Screens, WithoutAServerThereIsNoScreen) {
  setenv("DISPLAY", ":9999", 1);
  const X11Connection connection;
  X11Screens screens(connection, 1);
  EXPECT_EQ(screens.mainScreenVisibleFrame(), std::nullopt);
  EXPECT_EQ(screens.mouseLocation(), Point{});
}

}  // namespace
}  // namespace lumiwren::testing
