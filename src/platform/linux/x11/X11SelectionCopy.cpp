#include "platform/linux/x11/X11SelectionCopy.h"

#include "base/Task.h"
#include "platform/linux/x11/XKBProtocol.h"

#include <string_view>
#include <utility>

namespace lumiwren {
namespace {

// In units of four bytes; longer than any window class.
constexpr std::uint32_t longestClass = 1024;

KeySet keySet(const std::uint8_t (&bits)[32]) {
  KeySet keys;
  for (std::size_t keycode = 0; keycode < keys.size(); ++keycode) {
    keys[keycode] = (bits[keycode / 8] >> (keycode % 8) & 1U) != 0;
  }
  return keys;
}

}  // namespace

KeyChord copyChord(const X11KeyMap &keyMap, const KeySet &heldKeys, std::uint32_t group,
                   std::uint8_t lockedModifiers, std::uint8_t latchedModifiers) {
  KeyChord chord;
  const auto release = [&chord](const KeySet &keys) {
    for (std::size_t keycode = 0; keycode < keys.size(); ++keycode) {
      if (keys[keycode]) {
        chord.strokes.push_back({KeyDirection::Up, static_cast<xcb_keycode_t>(keycode)});
      }
    }
  };
  // Letters before modifiers, as fingers do it.
  const KeySet held = heldKeys & ~keyMap.lockKeys();
  release(held & ~keyMap.modifierKeys());
  release(held & keyMap.modifierKeys());

  const xcb_keycode_t control = keyMap.controlKey();
  const xcb_keycode_t letter = keyMap.copyKey(group);
  chord.strokes.insert(chord.strokes.end(), {{KeyDirection::Down, control},
                                             {KeyDirection::Down, letter},
                                             {KeyDirection::Up, letter},
                                             {KeyDirection::Up, control}});
  chord.lockedModifiers = lockedModifiers & keyMap.disturbingModifiers();
  chord.breaksLatches = latchedModifiers != 0;
  return chord;
}

X11SelectionCopy::X11SelectionCopy(const X11Connection &connection, X11InputChannel &channel,
                                   CopyPrimary copyPrimary, const std::vector<std::string> &terminalClasses)
    : connection_(connection),
      channel_(channel),
      copyPrimary_(std::move(copyPrimary)),
      terminals_(terminalClasses) {
  if (channel_.isUsable()) {
    // The extension answers only those who have greeted it.
    xcb_discard_reply(connection_.get(), xcb_xkb_use_extension(connection_.get(), 1, 0).sequence);
  }
}

void X11SelectionCopy::postCopy(const std::stop_token &token) {
  throwIfStopped(token);
  if (!channel_.isUsable()) {
    return;
  }
  const XReply<xcb_get_input_focus_reply_t> focus(
      xcb_get_input_focus_reply(connection_.get(), xcb_get_input_focus(connection_.get()), nullptr));
  const xcb_window_t window = focus ? focus->focus : XCB_NONE;
  switch (front(window)) {
    case Front::Nobody:
      break;
    case Front::Terminal:
      copyPrimary_(window, token);
      break;
    case Front::Application:
      postChord(token);
      break;
  }
}

X11SelectionCopy::Front X11SelectionCopy::front(xcb_window_t focus) const {
  if (focus == XCB_NONE || focus == XCB_INPUT_FOCUS_POINTER_ROOT || focus == connection_.root()) {
    return Front::Nobody;
  }
  xcb_connection_t *connection = connection_.get();
  // The focus may be in a window inside the one that has the application's class, and every class counts: a
  // chord in a terminal is worse than none.
  for (xcb_window_t window = focus; window != connection_.root();) {
    const auto classQuestion =
        xcb_get_property(connection, 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, longestClass);
    const auto parentQuestion = xcb_query_tree(connection, window);
    const XReply<xcb_get_property_reply_t> windowClass(
        xcb_get_property_reply(connection, classQuestion, nullptr));
    const XReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(connection, parentQuestion, nullptr));
    if (!windowClass || !tree || tree->parent == XCB_NONE) {
      // The window has just been closed, and it is not known who comes to the front.
      return Front::Nobody;
    }
    const std::string_view classes(
        static_cast<const char *>(xcb_get_property_value(windowClass.get())),
        static_cast<std::size_t>(xcb_get_property_value_length(windowClass.get())));
    if (terminals_.contains(classes)) {
      return Front::Terminal;
    }
    window = tree->parent;
  }
  return Front::Application;
}

void X11SelectionCopy::postChord(const std::stop_token &token) {
  xcb_connection_t *connection = connection_.get();
  const auto heldQuestion = xcb_query_keymap(connection);
  const auto stateQuestion = xcb_xkb_get_state(connection, XCB_XKB_ID_USE_CORE_KBD);
  const auto keyMap = X11KeyMap::read(connection);
  const XReply<xcb_query_keymap_reply_t> held(xcb_query_keymap_reply(connection, heldQuestion, nullptr));
  const XReply<xcb_xkb_get_state_reply_t> state(xcb_xkb_get_state_reply(connection, stateQuestion, nullptr));
  if (!keyMap || !held || !state) {
    return;
  }
  throwIfStopped(token);
  // The locked group: a group that a held key selects ends when that key is let go.
  channel_.post(
      copyChord(*keyMap, keySet(held->keys), state->lockedGroup, state->lockedMods, state->latchedMods));
}

}  // namespace lumiwren
