#pragma once

#include "base/Handle.h"
#include "base/MainQueue.h"
#include "platform/EventMonitors.h"
#include "platform/GlobalMonitorList.h"
#include "platform/linux/x11/OwnWindows.h"
#include "platform/linux/x11/X11InputChannel.h"
#include "platform/linux/x11/X11KeyMap.h"

#include <xcb/xinput.h>

#include <cstdint>
#include <future>
#include <memory>
#include <set>
#include <thread>
#include <utility>

namespace lumiwren {

/// The global monitors of an X11 session: every key and button press that the server reports, except those
/// that go to this program's own windows. Nothing is grabbed and nothing is kept from anybody. A thread waits
/// for the server and posts each press to the main thread; it sleeps while nothing happens.
class X11EventMonitors {
public:
  /// `ownResourceBase` is that of the connection that the program's windows are made on. The channel outlives
  /// this object, which ends the channel's connection.
  X11EventMonitors(MainQueue &mainQueue, X11InputChannel &channel, std::uint32_t ownResourceBase);
  X11EventMonitors(const X11EventMonitors &) = delete;
  X11EventMonitors &operator=(const X11EventMonitors &) = delete;
  ~X11EventMonitors();

  /// See EventMonitors. What is pressed after this call has returned is reported. Main thread.
  Handle addGlobalMonitor(std::uint32_t mask, EventMonitors::GlobalHandler handler);

private:
  void run();
  bool startWatching();
  void findOwnWindows();
  void watchIfOwn(xcb_window_t window);
  void locateFocusAndPointer();
  void readKeyMap();

  void handle(const xcb_generic_event_t &event);
  void handleInput(const xcb_ge_generic_event_t &event);
  void handleKeyboardChange(const xcb_generic_event_t &event);
  void keyPressed(const xcb_input_raw_key_press_event_t &press);
  void buttonPressed(const xcb_input_raw_button_press_event_t &press);
  /// Raw events name the button on the device; which one is the primary button is the user's choice, for one
  /// device or for all.
  std::uint32_t logicalButton(xcb_input_device_id_t device, std::uint32_t physicalButton);
  void report(const InputEvent &event) const;

  MainQueue &mainQueue_;
  X11InputChannel &channel_;
  const std::uint32_t ownResourceBase_;
  const std::shared_ptr<GlobalMonitorList> monitors_ = std::make_shared<GlobalMonitorList>();  // main thread
  std::promise<bool> watchingPromise_;
  const std::shared_future<bool> watching_{watchingPromise_.get_future()};

  // The thread's own:
  OwnWindows ownWindows_;
  X11KeyMap keyMap_;
  std::uint8_t modifiers_ = 0;  // real modifiers in effect
  std::set<std::pair<xcb_input_device_id_t, std::uint32_t>> heldKeys_;

  std::thread thread_;  // the last member: it uses the others
};

}  // namespace lumiwren
