#include "platform/linux/x11/X11ScreenRecording.h"

#include "support/Process.h"
#include "support/XServer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

namespace lumiwren::testing {
namespace {

TEST(X11ScreenRecording, AServerWithAScreenLetsItBeRecorded) {
  const XServer server;
  setenv("DISPLAY", server.display().c_str(), 1);
  const X11Connection connection;
  X11ScreenRecording recording(connection, "/a/tool");
  EXPECT_TRUE(recording.canRecord());
  EXPECT_EQ(recording.tool(), "/a/tool");
}

TEST(X11ScreenRecording, AServerInsideAWaylandSessionHasNothingToRecord) {
  const XServer server;
  setenv("DISPLAY", server.display().c_str(), 1);
  Process naming(
      Process::Options{.command = {"xrandr", "--setmonitor", "XWAYLAND0", "640/160x480/120+0+0", "screen"},
                       .environment = server.environment()});
  ASSERT_EQ(naming.wait(), 0);
  const X11Connection connection;
  EXPECT_FALSE(X11ScreenRecording(connection, "/a/tool").canRecord());
}

TEST(X11ScreenRecording, AServerThatIsGoneDoesNot) {
  std::optional<XServer> server(std::in_place);
  setenv("DISPLAY", server->display().c_str(), 1);
  const X11Connection connection;
  X11ScreenRecording recording(connection, "/a/tool");
  server.reset();
  EXPECT_FALSE(recording.canRecord());
}

TEST(X11ScreenRecording, WithoutAServerThereIsNothingToRecord) {
  setenv("DISPLAY", ":9999", 1);
  const X11Connection connection;
  EXPECT_FALSE(X11ScreenRecording(connection, "/a/tool").canRecord());
}

}  // namespace
}  // namespace lumiwren::testing
