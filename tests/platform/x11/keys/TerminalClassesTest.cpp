#include "platform/linux/x11/TerminalClasses.h"

#include <gtest/gtest.h>

#include <string>

namespace lumiwren::testing {
namespace {

using namespace std::string_literals;

TEST(TerminalClasses, KnowsTerminalsByInstanceOrClassInEitherCase) {
  const TerminalClasses classes({});
  for (const std::string &terminal :
       {"xterm\0XTerm\0"s, "x\0UXTerm\0"s, "gnome-terminal-server\0Gnome-terminal\0"s, "konsole\0konsole\0"s,
        "xfce4-terminal\0Xfce4-terminal\0"s, "Alacritty\0Alacritty\0"s, "kitty\0kitty\0"s,
        "st-256color\0st-256color\0"s, "urxvt\0URxvt\0"s, "foot\0foot"s,
        "org.gnome.Console\0org.gnome.Console\0"s, "guake\0Guake\0"s, "tilix\0Tilix\0"s,
        "terminator\0Terminator\0"s, "yakuake\0yakuake\0"s,
        "com.mitchellh.ghostty\0com.mitchellh.ghostty\0"s}) {
    EXPECT_TRUE(classes.contains(terminal)) << terminal;
  }
}

TEST(TerminalClasses, OtherApplicationsAreNone) {
  const TerminalClasses classes({});
  for (const std::string &other :
       {"gedit\0Gedit\0"s, "chromium\0Chromium\0"s, "xtermx\0notxterm\0"s, "\0\0"s, ""s}) {
    EXPECT_FALSE(classes.contains(other)) << other;
  }
}

TEST(TerminalClasses, TheUserMayAddSome) {
  const TerminalClasses classes({"MyTerm", ""});
  EXPECT_TRUE(classes.contains("something\0myterm\0"s));
  EXPECT_FALSE(classes.contains("\0\0"s));
  EXPECT_FALSE(TerminalClasses({}).contains("something\0myterm\0"s));
}

}  // namespace
}  // namespace lumiwren::testing
