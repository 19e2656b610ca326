// selection_owner WORDS...: owns a selection and behaves as badly as it is told. Prints "window NUMBER" and
// "ready" when it owns the selection, "asked TARGET" for every request, "finished TARGET" after the last
// increment, "lost" when somebody else has taken the selection.
//   own NAME                    the selection, before any other word; CLIPBOARD if it is not given
//   give TARGET TYPE FORMAT TEXT  a target and the property that answers it
//   give-hex TARGET TYPE FORMAT HEX  the same with any bytes
//   fill TARGET BYTES           a target of patterned bytes; in increments of 256 KB when there are more
//   offer TARGET                is listed, and refused when it is asked for
//   silent TARGET               is listed (but for TARGETS itself), and never answered
//   refuse-targets              TARGETS is refused
//   together                    nothing but TARGETS is answered before every target has been asked for
//   delay MILLISECONDS          before each answer
//   die-after N, stall-after N  at increment N
//   yield-at TARGET TEXT        when it is asked for, another window takes over, and has only the text

#include "support/SelectionClient.h"
#include "support/SelectionPattern.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <list>
#include <map>
#include <optional>
#include <set>
#include <thread>
#include <vector>

namespace lumiwren::testing {
namespace {

constexpr std::size_t incrementBytes = 256 << 10;

struct Target {
  std::string name;
  std::string type = {};
  std::uint8_t format = 8;
  std::vector<std::uint8_t> bytes = {};
  bool refused = false;
};

struct Transfer {
  xcb_window_t requestor;
  xcb_atom_t property;
  xcb_atom_t type;
  const Target *target;
  std::size_t sent = 0;
};

std::string fromHex(const std::string &hex) {
  std::string text;
  for (std::size_t index = 0; index < hex.size(); index += 2) {
    text.push_back(static_cast<char>(std::stoi(hex.substr(index, 2), nullptr, 16)));
  }
  return text;
}

class SelectionOwner {
public:
  explicit SelectionOwner(std::vector<std::string> words) : words_(std::move(words)) {
    std::string selection = "CLIPBOARD";
    while (position_ < words_.size()) {
      const auto word = next();
      if (word == "own") {
        selection = next();
      } else if (word == "give" || word == "give-hex") {
        Target target{.name = next(), .type = next(), .format = static_cast<std::uint8_t>(std::stoi(next()))};
        const auto text = word == "give" ? next() : fromHex(next());
        target.bytes.assign(text.begin(), text.end());
        targets_.push_back(target);
      } else if (word == "fill") {
        const auto name = next();
        targets_.push_back({.name = name, .type = name, .bytes = patternBytes(std::stoul(next()))});
      } else if (word == "offer") {
        targets_.push_back({.name = next(), .refused = true});
      } else if (word == "silent") {
        const auto name = next();
        silent_.insert(name);
        if (name != "TARGETS") {
          targets_.push_back({.name = name});
        }
      } else if (word == "refuse-targets") {
        refuseTargets_ = true;
      } else if (word == "together") {
        together_ = true;
      } else if (word == "delay") {
        delay_ = std::chrono::milliseconds(std::stol(next()));
      } else if (word == "die-after") {
        dieAfter_ = std::stoul(next());
      } else if (word == "stall-after") {
        stallAfter_ = std::stoul(next());
      } else if (word == "yield-at") {
        yieldAt_ = next();
        yieldText_ = next();
      } else {
        throw std::invalid_argument("no such word: " + word);
      }
    }
    selection_ = client_.atom(selection);
    take(client_.window);
    std::cout << "window " << client_.window << std::endl << "ready" << std::endl;
  }

  [[noreturn]] void run() {
    for (;;) {
      const auto event = client_.nextEvent();
      switch (event->response_type & 0x7F) {
        case XCB_SELECTION_REQUEST:
          requested(reinterpret_cast<const xcb_selection_request_event_t &>(*event));
          break;
        case XCB_SELECTION_CLEAR:
          std::cout << "lost" << std::endl;
          break;
        case XCB_PROPERTY_NOTIFY:
          propertyChanged(reinterpret_cast<const xcb_property_notify_event_t &>(*event));
          break;
        default:
          break;
      }
    }
  }

private:
  std::string next() { return words_.at(position_++); }

  void take(xcb_window_t window) {
    xcb_set_selection_owner(client_.connection, window, selection_, client_.serverTime());
    const Owned<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
        client_.connection, xcb_get_selection_owner(client_.connection, selection_), nullptr));
    if (reply->owner != window) {
      throw std::runtime_error("the selection was refused");
    }
  }

  void requested(const xcb_selection_request_event_t &event) {
    const auto name = client_.name(event.target);
    std::cout << "asked " << name << std::endl;
    asked_.insert(name);
    if (name == yieldAt_) {
      targets_ = {
          {.name = "UTF8_STRING", .type = "UTF8_STRING", .bytes = {yieldText_.begin(), yieldText_.end()}}};
      yieldAt_.clear();
      take(client_.createWindow());
      return;
    }
    if (silent_.contains(name)) {
      return;
    }
    if (together_ && name != "TARGETS") {
      waiting_.push_back(event);
      if (asked_.size() < targets_.size() + 1) {
        return;
      }
      for (const auto &request : waiting_) {
        answer(request);
      }
      waiting_.clear();
      return;
    }
    std::this_thread::sleep_for(delay_);
    answer(event);
  }

  void answer(const xcb_selection_request_event_t &event) {
    xcb_selection_notify_event_t notify{};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = event.time;
    notify.requestor = event.requestor;
    notify.selection = event.selection;
    notify.target = event.target;
    notify.property = give(event) ? event.property : xcb_atom_t{XCB_ATOM_NONE};
    xcb_send_event(client_.connection, 0, event.requestor, 0, reinterpret_cast<const char *>(&notify));
  }

  bool give(const xcb_selection_request_event_t &event) {
    const auto name = client_.name(event.target);
    if (name == "TARGETS") {
      std::vector<xcb_atom_t> atoms{event.target};
      for (const auto &target : targets_) {
        atoms.push_back(client_.atom(target.name));
      }
      xcb_change_property(client_.connection, XCB_PROP_MODE_REPLACE, event.requestor, event.property,
                          XCB_ATOM_ATOM, 32, static_cast<std::uint32_t>(atoms.size()), atoms.data());
      return !refuseTargets_;
    }
    const auto target = std::find_if(targets_.begin(), targets_.end(),
                                     [&](const Target &candidate) { return candidate.name == name; });
    if (target == targets_.end() || target->refused) {
      return false;
    }
    if (target->bytes.size() <= incrementBytes) {
      change(event.requestor, event.property, client_.atom(target->type), *target, target->bytes.data(),
             target->bytes.size());
      return true;
    }
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(client_.connection, event.requestor, XCB_CW_EVENT_MASK, &events);
    const auto size = static_cast<std::uint32_t>(target->bytes.size());
    xcb_change_property(client_.connection, XCB_PROP_MODE_REPLACE, event.requestor, event.property,
                        client_.atom("INCR"), 32, 1, &size);
    transfers_.push_back({event.requestor, event.property, client_.atom(target->type), &*target});
    return true;
  }

  void change(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, const Target &target,
              const std::uint8_t *bytes, std::size_t size) {
    const auto units = static_cast<std::uint32_t>(size / (target.format / 8U));
    xcb_change_property(client_.connection, XCB_PROP_MODE_REPLACE, requestor, property, type, target.format,
                        units, bytes);
  }

  void propertyChanged(const xcb_property_notify_event_t &event) {
    const auto transfer = std::find_if(transfers_.begin(), transfers_.end(), [&](const Transfer &candidate) {
      return candidate.requestor == event.window && candidate.property == event.atom;
    });
    if (event.state != XCB_PROPERTY_DELETE || transfer == transfers_.end()) {
      return;
    }
    ++increments_;
    if (increments_ == dieAfter_) {
      _exit(0);
    }
    if (stallAfter_ && increments_ >= stallAfter_) {
      return;
    }
    const auto &bytes = transfer->target->bytes;
    const auto size = std::min(incrementBytes, bytes.size() - transfer->sent);
    change(transfer->requestor, transfer->property, transfer->type, *transfer->target,
           bytes.data() + transfer->sent, size);
    transfer->sent += size;
    if (size == 0) {
      std::cout << "finished " << transfer->target->name << std::endl;
      transfers_.erase(transfer);
    }
  }

  std::vector<std::string> words_;
  std::size_t position_ = 0;
  SelectionClient client_;
  xcb_atom_t selection_ = XCB_ATOM_NONE;
  std::vector<Target> targets_;
  std::list<Transfer> transfers_;
  std::vector<xcb_selection_request_event_t> waiting_;
  std::set<std::string> silent_;
  std::set<std::string> asked_;
  std::string yieldAt_;
  std::string yieldText_;
  std::chrono::milliseconds delay_{0};
  std::optional<std::size_t> dieAfter_;
  std::optional<std::size_t> stallAfter_;
  std::size_t increments_ = 0;
  bool refuseTargets_ = false;
  bool together_ = false;
};

}  // namespace
}  // namespace lumiwren::testing

int main(int argc, char **argv) {
  try {
    lumiwren::testing::SelectionOwner({argv + 1, argv + argc}).run();
  } catch (const std::exception &error) {
    std::cerr << "selection_owner: " << error.what() << '\n';
    return 1;
  }
}
