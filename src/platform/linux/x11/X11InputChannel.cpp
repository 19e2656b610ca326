#include "platform/linux/x11/X11InputChannel.h"

#include "platform/linux/x11/XKBProtocol.h"

#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include <sys/socket.h>

#include <algorithm>

namespace lumiwren {

X11InputChannel::X11InputChannel() {
  xcb_connection_t *connection = connection_.get();
  if (!connection_.isUsable()) {
    return;
  }
  for (auto *extension : {&xcb_input_id, &xcb_xkb_id, &xcb_test_id}) {
    xcb_prefetch_extension_data(connection, extension);
  }
  const auto *input = xcb_get_extension_data(connection, &xcb_input_id);
  const auto *xkb = xcb_get_extension_data(connection, &xcb_xkb_id);
  const auto *test = xcb_get_extension_data(connection, &xcb_test_id);
  if (!input || !input->present || !xkb || !xkb->present || !test || !test->present) {
    return;
  }
  // From 2.2 on raw events also come while another client has grabbed the keyboard.
  const auto inputQuestion = xcb_input_xi_query_version(connection, 2, 2);
  const auto xkbQuestion = xcb_xkb_use_extension(connection, 1, 0);
  const XReply<xcb_input_xi_query_version_reply_t> inputVersion(
      xcb_input_xi_query_version_reply(connection, inputQuestion, nullptr));
  const XReply<xcb_xkb_use_extension_reply_t> xkbVersion(
      xcb_xkb_use_extension_reply(connection, xkbQuestion, nullptr));
  inputOpcode_ = input->major_opcode;
  xkbFirstEvent_ = xkb->first_event;
  usable_ = xkbVersion && xkbVersion->supported && inputVersion &&
            (inputVersion->major_version > 2 ||
             (inputVersion->major_version == 2 && inputVersion->minor_version >= 2));
}

void X11InputChannel::post(const KeyChord &chord) {
  const auto lock = lockForSending();
  xcb_connection_t *connection = connection_.get();
  const auto setLocks = [&](std::uint8_t locked, std::uint8_t brokenLatches) {
    xcb_xkb_latch_lock_state(connection, XCB_XKB_ID_USE_CORE_KBD, chord.lockedModifiers, locked, 0, 0,
                             brokenLatches, 0, 0);
  };
  if (chord.lockedModifiers != 0 || chord.breaksLatches) {
    setLocks(0, chord.breaksLatches ? 0xff : 0);
  }
  for (const KeyStroke &stroke : chord.strokes) {
    const bool down = stroke.direction == KeyDirection::Down;
    const auto cookie = xcb_test_fake_input(connection, down ? XCB_KEY_PRESS : XCB_KEY_RELEASE,
                                            stroke.keycode, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    if (down) {
      const std::lock_guard ownLock(ownPressesMutex_);
      ownPresses_.push_back({cookie.sequence, stroke.keycode});
    }
  }
  if (chord.lockedModifiers != 0) {
    setLocks(chord.lockedModifiers, 0);
  }
  // What the user presses from now on must not carry the number of our last stroke.
  xcb_no_operation(connection);
  xcb_flush(connection);
}

bool X11InputChannel::isOwnPress(std::uint32_t sequence, std::uint32_t keycode) {
  const std::lock_guard lock(ownPressesMutex_);
  // Sequence numbers wrap around.
  const auto isPast = [sequence](const OwnPress &press) {
    return static_cast<std::int32_t>(press.sequence - sequence) < 0;
  };
  while (!ownPresses_.empty() && isPast(ownPresses_.front())) {
    ownPresses_.pop_front();
  }
  if (ownPresses_.empty() || ownPresses_.front().sequence != sequence ||
      ownPresses_.front().keycode != keycode) {
    return false;
  }
  ownPresses_.pop_front();
  return true;
}

XReply<xcb_generic_event_t> X11InputChannel::nextEvent() {
  return XReply<xcb_generic_event_t>(xcb_wait_for_event(connection_.get()));
}

void X11InputChannel::shutDown() {
  if (connection_.isUsable()) {
    // The way to wake xcb_wait_for_event() that needs no answer from a server that may be stuck.
    shutdown(xcb_get_file_descriptor(connection_.get()), SHUT_RDWR);
  }
}

}  // namespace lumiwren
