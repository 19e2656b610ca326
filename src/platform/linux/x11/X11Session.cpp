#include "platform/linux/x11/X11Session.h"

#include "platform/linux/x11/X11ApplicationWindows.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11EventMonitors.h"
#include "platform/linux/x11/X11InputChannel.h"
#include "platform/linux/x11/X11PanelWindows.h"
#include "platform/linux/x11/X11Pasteboard.h"
#include "platform/linux/x11/X11ScreenRecording.h"
#include "platform/linux/x11/X11Screens.h"
#include "platform/linux/x11/X11SelectionCopy.h"
#include "platform/linux/x11/X11Trust.h"

#include <xcb/xcb.h>

#include <utility>

namespace lumiwren {
namespace {

std::uint32_t resourceBase(void *connection) {
  return xcb_get_setup(static_cast<xcb_connection_t *>(connection))->resource_id_base;
}

}  // namespace

bool isConnectionLost(void *connection) {
  return xcb_connection_has_error(static_cast<xcb_connection_t *>(connection)) != 0;
}

struct X11Session::Facilities {
  Facilities(MainQueue &mainQueue, const Options &options)
      : pasteboard(options.holder),
        eventMonitors(mainQueue, channel, resourceBase(options.toolkitConnection)),
        selectionCopy(
            questions, channel,
            [this](std::uint32_t window, const std::stop_token &token) {
              return pasteboard.copyPrimary(window, token);
            },
            options.moreTerminals),
        screens(questions, options.pixelsPerPoint),
        panelWindows(static_cast<xcb_connection_t *>(options.toolkitConnection), options.pixelsPerPoint,
                     options.watchReadable),
        applicationWindows(static_cast<xcb_connection_t *>(options.toolkitConnection), questions),
        screenRecording(questions, options.screenshotTool) {}

  const X11Connection questions;
  X11InputChannel channel;
  X11Pasteboard pasteboard;
  X11EventMonitors eventMonitors;
  X11SelectionCopy selectionCopy;
  X11Trust trust{channel};
  X11Screens screens;
  X11PanelWindows panelWindows;
  X11ApplicationWindows applicationWindows;
  X11ScreenRecording screenRecording;
};

X11Session::X11Session(MainQueue &mainQueue, const Options &options)
    : facilities_(std::make_unique<Facilities>(mainQueue, options)) {}

X11Session::~X11Session() = default;

Handle X11Session::addGlobalMonitor(std::uint32_t mask, EventMonitors::GlobalHandler handler) {
  return facilities_->eventMonitors.addGlobalMonitor(mask, std::move(handler));
}

std::uint32_t X11Session::currentTime() {
  return facilities_->panelWindows.currentTime();
}

Pasteboard &X11Session::pasteboard() {
  return facilities_->pasteboard;
}

SelectionCopy &X11Session::selectionCopy() {
  return facilities_->selectionCopy;
}

AccessibilityTrust &X11Session::accessibilityTrust() {
  return facilities_->trust;
}

Screens &X11Session::screens() {
  return facilities_->screens;
}

PanelWindows &X11Session::panelWindows() {
  return facilities_->panelWindows;
}

ApplicationWindows &X11Session::applicationWindows() {
  return facilities_->applicationWindows;
}

ScreenRecording &X11Session::screenRecording() {
  return facilities_->screenRecording;
}

}  // namespace lumiwren
