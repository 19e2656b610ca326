#include "platform/x11/panel/XDesktop.h"

#include <xcb/xtest.h>

#include <QCoreApplication>
#include <QEventLoop>

#include <stdlib.h>

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace lumiwren::testing {
namespace {

template <typename Reply>
using ReplyPtr = std::unique_ptr<Reply, decltype(&std::free)>;

template <typename Reply>
ReplyPtr<Reply> owned(Reply *reply) {
  return {reply, &std::free};
}

std::vector<std::string> command(const std::string &manager, const std::filesystem::path &home) {
  if (manager == "openbox-follow-mouse") {
    const auto file = home / "rc.xml";
    std::ofstream(file) << "<?xml version=\"1.0\"?><openbox_config xmlns=\"http://openbox.org/3.4/rc\">"
                           "<focus><followMouse>yes</followMouse></focus></openbox_config>";
    return {"openbox", "--config-file", file.string()};
  }
  if (manager == "xfwm4") {
    return {"dbus-run-session", "xfwm4", "--compositor=on"};
  }
  if (manager == "mutter") {
    return {"dbus-run-session", "mutter", "--x11"};
  }
  return {"dbus-run-session", manager};
}

bool hasCompositor(const std::string &manager) {
  return manager == "xfwm4" || manager == "kwin_x11" || manager == "mutter";
}

}  // namespace

bool waitFor(const std::function<bool()> &condition) {
  const auto end = std::chrono::steady_clock::now() + patience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    if (QCoreApplication::instance()) {
      QCoreApplication::processEvents(QEventLoop::AllEvents);
      QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

XDesktop::XDesktop(const std::string &windowManager)
    : server_(XServer::Options{.width = width, .height = height}) {
  std::string home = (std::filesystem::temp_directory_path() / "lumiwren-panel-XXXXXX").string();
  if (!mkdtemp(home.data())) {
    throw std::runtime_error("no temporary folder");
  }
  home_ = home;
  int screenNumber = 0;
  connection_ = xcb_connect(display().c_str(), &screenNumber);
  screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
  auto environment = server_.environment();
  environment.insert(
      environment.end(),
      {{"HOME", home}, {"XDG_RUNTIME_DIR", home}, {"XDG_CONFIG_HOME", home}, {"QT_QPA_PLATFORM", "xcb"}});
  windowManager_ = std::make_unique<Process>(
      Process::Options{.command = command(windowManager, home_), .environment = environment});
  const bool isUp = waitFor([&] {
    const auto check = property(screen_->root, "_NET_SUPPORTING_WM_CHECK");
    if (!check || !property(*check, "_NET_SUPPORTING_WM_CHECK")) {
      return false;
    }
    const auto owner = owned(xcb_get_selection_owner_reply(
        connection_, xcb_get_selection_owner(connection_, atom("_NET_WM_CM_S0")), nullptr));
    return !hasCompositor(windowManager) || (owner && owner->owner != XCB_NONE);
  });
  if (!isUp) {
    throw std::runtime_error(windowManager + " did not come up");
  }
}

XDesktop::~XDesktop() {
  windowManager_.reset();
  xcb_disconnect(connection_);
  std::filesystem::remove_all(home_);
}

std::unique_ptr<Process> XDesktop::startApplication(const std::string &geometry, const std::string &color) {
  const auto before = active();
  auto environment = server_.environment();
  environment.emplace_back("HOME", home_.string());
  auto application = std::make_unique<Process>(
      Process::Options{.command = {"xterm", "-geometry", geometry, "-bg", color, "-fg", color, "-cr", color,
                                   "-e", "sleep", "3600"},
                       .environment = environment});
  moveTo(30, 760);  // where focus follows the mouse, it comes to the window when the pointer does
  const bool isUp = waitFor([&] {
    const auto now = active();
    if (now == XCB_NONE || now == before) {
      moveTo(30, 761);
      moveTo(100, 700);
    }
    return now != XCB_NONE && now != before && focused() > XCB_INPUT_FOCUS_POINTER_ROOT &&
           focused() != screen_->root;
  });
  if (!isUp) {
    throw std::runtime_error("xterm did not get the focus");
  }
  return application;
}

xcb_atom_t XDesktop::atom(const std::string &name) {
  const auto reply = owned(xcb_intern_atom_reply(
      connection_, xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()),
      nullptr));
  return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_NONE);
}

std::optional<std::uint32_t> XDesktop::property(xcb_window_t window, const std::string &name) {
  const auto reply = owned(xcb_get_property_reply(
      connection_, xcb_get_property(connection_, 0, window, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, 1),
      nullptr));
  if (!reply || xcb_get_property_value_length(reply.get()) < 4) {
    return std::nullopt;
  }
  return *static_cast<const std::uint32_t *>(xcb_get_property_value(reply.get()));
}

xcb_window_t XDesktop::focused() {
  const auto reply = owned(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
  return reply ? reply->focus : static_cast<xcb_window_t>(XCB_NONE);
}

xcb_window_t XDesktop::active() {
  return property(screen_->root, "_NET_ACTIVE_WINDOW").value_or(XCB_NONE);
}

std::uint32_t XDesktop::pixel(int x, int y) {
  const auto image = owned(xcb_get_image_reply(
      connection_,
      xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, screen_->root, static_cast<std::int16_t>(x),
                    static_cast<std::int16_t>(y), 1, 1, ~0U),
      nullptr));
  return image ? *reinterpret_cast<const std::uint32_t *>(xcb_get_image_data(image.get())) & 0xffffff : 0;
}

void XDesktop::tellManager(xcb_window_t window, const std::string &type, std::uint32_t first,
                           std::uint32_t second, std::uint32_t third, std::uint32_t fourth) {
  xcb_client_message_event_t message{};
  message.response_type = XCB_CLIENT_MESSAGE;
  message.format = 32;
  message.window = window;
  message.type = atom(type);
  message.data.data32[0] = first;
  message.data.data32[1] = second;
  message.data.data32[2] = third;
  message.data.data32[3] = fourth;
  xcb_send_event(connection_, 0, screen_->root,
                 XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                 reinterpret_cast<const char *>(&message));
  xcb_flush(connection_);
}

void XDesktop::setFullScreen(xcb_window_t client, bool fullScreen) {
  tellManager(client, "_NET_WM_STATE", fullScreen ? 1 : 0, atom("_NET_WM_STATE_FULLSCREEN"), 0, 1);
}

void XDesktop::setDesktopCount(std::uint32_t count) {
  tellManager(screen_->root, "_NET_NUMBER_OF_DESKTOPS", count);
  waitFor([&] { return property(screen_->root, "_NET_NUMBER_OF_DESKTOPS") == count; });
}

void XDesktop::setCurrentDesktop(std::uint32_t desktop) {
  tellManager(screen_->root, "_NET_CURRENT_DESKTOP", desktop);
}

std::uint32_t XDesktop::currentDesktop() {
  return property(screen_->root, "_NET_CURRENT_DESKTOP").value_or(0);
}

void XDesktop::moveTo(int x, int y) {
  xcb_test_fake_input(connection_, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, screen_->root,
                      static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0);
  xcb_flush(connection_);
}

void XDesktop::press() {
  xcb_test_fake_input(connection_, XCB_BUTTON_PRESS, 1, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
  xcb_flush(connection_);
}

void XDesktop::release() {
  xcb_test_fake_input(connection_, XCB_BUTTON_RELEASE, 1, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
  xcb_flush(connection_);
}

void XDesktop::click(int x, int y) {
  moveTo(x, y);
  press();
  release();
}

void XDesktop::key(std::uint32_t keysym) {
  const auto *const setup = xcb_get_setup(connection_);
  const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
  const auto mapping = owned(xcb_get_keyboard_mapping_reply(
      connection_, xcb_get_keyboard_mapping(connection_, setup->min_keycode, count), nullptr));
  const auto *const symbols = xcb_get_keyboard_mapping_keysyms(mapping.get());
  for (int index = 0; index < count; ++index) {
    if (symbols[index * mapping->keysyms_per_keycode] == keysym) {
      const auto code = static_cast<std::uint8_t>(setup->min_keycode + index);
      xcb_test_fake_input(connection_, XCB_KEY_PRESS, code, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
      xcb_test_fake_input(connection_, XCB_KEY_RELEASE, code, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
      xcb_flush(connection_);
      return;
    }
  }
  throw std::runtime_error("no key types this character");
}

}  // namespace lumiwren::testing
