#include "platform/linux/x11/X11Trust.h"

#include "support/XServer.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace lumiwren::testing {
namespace {

TEST(X11Trust, AServerThatLetsKeysBeWatchedAndPostedIsTrusting) {
  const XServer server;
  setenv("DISPLAY", server.display().c_str(), 1);
  const X11InputChannel channel;
  X11Trust trust(channel);
  EXPECT_TRUE(trust.isProcessTrusted());
  EXPECT_TRUE(trust.isProcessTrustedWithPrompt());
}

TEST(X11Trust, WithoutXTestNothingCanBePosted) {
  const XServer server(XServer::Options{.arguments = {"-extension", "XTEST"}});
  setenv("DISPLAY", server.display().c_str(), 1);
  const X11InputChannel channel;
  X11Trust trust(channel);
  EXPECT_FALSE(trust.isProcessTrusted());
  EXPECT_FALSE(trust.isProcessTrustedWithPrompt());
}

TEST(X11Trust, WithoutAServerThereIsNoTrust) {
  setenv("DISPLAY", ":9999", 1);
  const X11InputChannel channel;
  EXPECT_FALSE(X11Trust(channel).isProcessTrusted());
}

}  // namespace
}  // namespace lumiwren::testing
