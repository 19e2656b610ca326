#include "platform/linux/x11/TerminalClasses.h"

#include <algorithm>
#include <functional>
#include <iterator>

namespace lumiwren {
namespace {

// In lower case, as instance or as class; desktop portable applications use their application identifier.
constexpr std::string_view known[] = {
    "alacritty",
    "aterm",
    "com.gexperts.tilix",
    "com.mitchellh.ghostty",
    "com.raggesilver.blackbox",
    "contour",
    "cool-retro-term",
    "cosmic-term",
    "deepin-terminal",
    "dev.warp.warp",
    "electerm",
    "eterm",
    "extraterm",
    "foot",
    "footclient",
    "ghostty",
    "gnome-console",
    "gnome-terminal",
    "gnome-terminal-server",
    "guake",
    "havoc",
    "hyper",
    "io.elementary.terminal",
    "kgx",
    "kitty",
    "koi8rxterm",
    "konsole",
    "lxterm",
    "lxterminal",
    "mate-terminal",
    "mlterm",
    "mrxvt",
    "org.codeberg.dnkl.foot",
    "org.contourterminal.contour",
    "org.gnome.console",
    "org.gnome.ptyxis",
    "org.gnome.terminal",
    "org.kde.konsole",
    "org.kde.yakuake",
    "org.wezfurlong.wezterm",
    "pangoterm",
    "pantheon-terminal",
    "ptyxis",
    "qterminal",
    "rio",
    "roxterm",
    "rxvt",
    "rxvt-unicode",
    "sakura",
    "st",
    "st-256color",
    "stterm",
    "tabby",
    "terminal",
    "terminator",
    "terminix",
    "terminology",
    "terminus",
    "termit",
    "termite",
    "tilda",
    "tilix",
    "tym",
    "urxvt",
    "urxvtc",
    "urxvtd",
    "uxterm",
    "warp",
    "wezterm",
    "wezterm-gui",
    "x-terminal-emulator",
    "xfce4-terminal",
    "xiterm",
    "xterm",
    "xvt",
    "yakuake",
    "zutty",
};

// Window classes are ASCII by convention.
std::string lowerCase(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), [](char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
  });
  return result;
}

}  // namespace

TerminalClasses::TerminalClasses(const std::vector<std::string> &more)
    : classes_(std::begin(known), std::end(known)) {
  for (const auto &name : more) {
    if (!name.empty()) {
      classes_.insert(lowerCase(name));
    }
  }
}

bool TerminalClasses::contains(std::string_view windowClass) const {
  while (!windowClass.empty()) {
    const auto end = std::min(windowClass.find('\0'), windowClass.size());
    if (classes_.contains(lowerCase(windowClass.substr(0, end)))) {
      return true;
    }
    windowClass.remove_prefix(std::min(end + 1, windowClass.size()));
  }
  return false;
}

}  // namespace lumiwren
