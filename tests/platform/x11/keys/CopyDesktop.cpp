#include "platform/x11/keys/CopyDesktop.h"

#include "platform/linux/EvdevKeyCodes.h"

#include <xcb/xfixes.h>

#include <linux/input-event-codes.h>
#include <poll.h>

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace lumiwren::testing {
namespace {

constexpr std::uint16_t markKey = KEY_F20;

std::filesystem::path makeDirectory() {
  std::string path = std::filesystem::temp_directory_path() / "lumiwren-copy-XXXXXX";
  if (mkdtemp(path.data()) == nullptr) {
    throw std::runtime_error("no temporary directory");
  }
  return path;
}

}  // namespace

CopyDesktop::CopyDesktop()
    : directory_(makeDirectory()), host_(XServer::Options{.width = 1100, .height = 800}) {
  setenv("DISPLAY", host_.display().c_str(), 1);
  hands_ = std::make_unique<InputDriver>();
  nested_.reset(new XServer(XServer::nestedIn(host_, {.width = 1000, .height = 700})));
  setenv("DISPLAY", nested_->display().c_str(), 1);
  // A real keyboard does not repeat by itself; the inner server does that.
  Process(Process::Options{.command = {"xset", "r", "off"}, .environment = host_.environment()}).wait();
  hands_->moveTo(500, 650);

  windowManager_ = start({"openbox"});
  watch_ = std::make_unique<X11Connection>();
  const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_change_window_attributes(watch_->get(), watch_->root(), XCB_CW_EVENT_MASK, &events);
  const XReply<xcb_xfixes_query_version_reply_t> version(
      xcb_xfixes_query_version_reply(watch_->get(), xcb_xfixes_query_version(watch_->get(), 5, 0), nullptr));
  for (const char *selection : {"PRIMARY", "CLIPBOARD"}) {
    xcb_xfixes_select_selection_input(watch_->get(), watch_->root(), watch_->atom(watch_->askAtom(selection)),
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER);
  }
  const auto supported = watch_->atom(watch_->askAtom("_NET_SUPPORTING_WM_CHECK"));
  waitUntil("window manager", [&] {
    const XReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        watch_->get(), xcb_get_property(watch_->get(), 0, watch_->root(), supported, XCB_ATOM_WINDOW, 0, 1),
        nullptr));
    return reply && reply->value_len == 1;
  });

  inside_ = std::make_unique<InputDriver>();
  questions_ = std::make_unique<X11Connection>();
  channel_ = std::make_unique<X11InputChannel>();
  pasteboard_ = std::make_unique<X11Pasteboard>(LUMIWREN_PASTEBOARD);
  monitors_ = std::make_unique<X11EventMonitors>(probe_.queue(), *channel_, 0);
  monitor_ = monitors_->addGlobalMonitor(eventMask::keyDown, probe_.handler());
  copy_ = std::make_unique<X11SelectionCopy>(
      *questions_, *channel_,
      [this](std::uint32_t window, const std::stop_token &token) {
        return pasteboard_->copyPrimary(window, token);
      },
      std::vector<std::string>{});
  settle();
}

CopyDesktop::~CopyDesktop() {
  std::error_code ignored;
  std::filesystem::remove_all(directory_, ignored);
}

std::unique_ptr<Process> CopyDesktop::start(std::vector<std::string> command) const {
  auto environment = nested_->environment();
  // Nothing of the developer's own settings, and no session bus to wait for.
  for (const char *name : {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"}) {
    environment.emplace_back(name, directory_);
  }
  environment.emplace_back("DBUS_SESSION_BUS_ADDRESS", "disabled:");
  environment.emplace_back("NO_AT_BRIDGE", "1");
  environment.emplace_back("QT_QPA_PLATFORM", "xcb");
  environment.emplace_back("GDK_BACKEND", "x11");
  return std::make_unique<Process>(
      Process::Options{.command = std::move(command), .environment = std::move(environment)});
}

void CopyDesktop::run(std::vector<std::string> command) const {
  const std::string name = command.front();
  if (start(std::move(command))->wait() != 0) {
    throw std::runtime_error(name + " failed");
  }
}

void CopyDesktop::waitUntil(std::string_view what, const std::function<bool()> &condition) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (!condition()) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd item{xcb_get_file_descriptor(watch_->get()), POLLIN, 0};
    XReply<xcb_generic_event_t> event(xcb_poll_for_event(watch_->get()));
    if (!event && (left.count() <= 0 || poll(&item, 1, static_cast<int>(left.count())) != 1)) {
      throw std::runtime_error("waited in vain for " + std::string(what));
    }
    while (event) {
      event.reset(xcb_poll_for_event(watch_->get()));
    }
  }
}

void CopyDesktop::pollUntil(std::string_view what, const std::function<bool()> &condition) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      throw std::runtime_error("waited in vain for " + std::string(what));
    }
  }
}

bool CopyDesktop::isInFront(std::string_view title) {
  const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
  const xcb_atom_t names[] = {watch_->atom(watch_->askAtom("_NET_WM_NAME")), XCB_ATOM_WM_NAME};
  for (xcb_window_t window = inside_->focus();
       window > XCB_INPUT_FOCUS_POINTER_ROOT && window != watch_->root();) {
    xcb_change_window_attributes(watch_->get(), window, XCB_CW_EVENT_MASK, &events);
    for (const xcb_atom_t name : names) {
      const XReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
          watch_->get(), xcb_get_property(watch_->get(), 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, 256),
          nullptr));
      if (reply && title == std::string_view(static_cast<const char *>(xcb_get_property_value(reply.get())),
                                             reply->value_len)) {
        front_ = window;
        return true;
      }
    }
    const XReply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(watch_->get(), xcb_query_tree(watch_->get(), window), nullptr));
    window = tree ? tree->parent : XCB_NONE;
  }
  return false;
}

void CopyDesktop::waitForFront(std::string_view title) {
  waitUntil(title, [&] { return isInFront(title); });
}

void CopyDesktop::clickInFront(int x, int y, int times) {
  const XReply<xcb_translate_coordinates_reply_t> place(xcb_translate_coordinates_reply(
      watch_->get(),
      xcb_translate_coordinates(watch_->get(), front_, watch_->root(), static_cast<std::int16_t>(x),
                                static_cast<std::int16_t>(y)),
      nullptr));
  if (!place) {
    throw std::runtime_error("the window in front is gone");
  }
  hands_->moveTo(place->dst_x, place->dst_y);
  for (; times > 0; --times) {
    // While the window manager still looks at a press, which it does longer when the window is new, the next
    // one may get lost.
    hands_->pressButton(1);
    pollUntil("the button to be down", [this] { return inside_->holdsButton(); });
    hands_->releaseButton(1);
    pollUntil("the button to be up", [this] { return !inside_->holdsButton(); });
  }
}

void CopyDesktop::putOnClipboard(std::string_view text) {
  clipboardOwner_ = start({"xclip", "-quiet", "-i", "-selection", "CLIPBOARD"});
  clipboardOwner_->write(text);
  clipboardOwner_->closeInput();
  waitForSelection("CLIPBOARD", text);
}

std::string CopyDesktop::selectionText(std::string_view selection) const {
  return start({"xclip", "-o", "-selection", std::string(selection), "-t", "UTF8_STRING"})
      ->readAll()
      .value_or("");
}

void CopyDesktop::waitForSelection(std::string_view selection, std::string_view text) {
  std::string last;
  try {
    waitUntil(selection, [&] { return (last = selectionText(selection)) == text; });
  } catch (const std::runtime_error &error) {
    throw std::runtime_error(error.what() + (" to be \"" + std::string(text)) + "\": it was \"" + last +
                             "\", and is \"" + selectionText(selection) + '"');
  }
}

void CopyDesktop::settle() {
  hands_->tap(markKey);
  const InputEvent mark{EventKind::KeyDown, 90, 0};
  for (;;) {
    const auto events = probe_.take(1);
    if (events.empty()) {
      throw std::runtime_error("the keyboard is dead");
    }
    if (events.back() == mark) {
      break;
    }
  }
  // Its press has come; its release comes through the outer server on its own.
  pollUntil("the keyboard", [this] { return !inside_->heldKeys()[markKey + evdevOffset]; });
}

}  // namespace lumiwren::testing
