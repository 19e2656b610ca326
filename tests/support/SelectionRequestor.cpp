// selection_requestor WORDS...: asks the owner of CLIPBOARD, in the order of the words.
//   get TARGET              prints "TARGET: TYPE FORMAT SIZE HASH", or "TARGET: refused"
//   multiple TARGET... end  the same for each, asked for by one MULTIPLE request
//   list                    prints "targets:" and the names in the owner's order
//   times                   prints "in time" when TIMESTAMP is no later than now, and a request from before
//                           that time is refused
//   get-obsolete TARGET     as get, without naming a property
//   stall TARGET            takes one increment, prints "stalled" and takes no more until its input ends
//   die TARGET              takes one increment and ends at once
// Nothing is printed about an owner that does not answer: such a requestor waits.

#include "support/SelectionClient.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <iostream>
#include <set>
#include <vector>

namespace lumiwren::testing {
namespace {

struct Property {
  xcb_atom_t type = XCB_ATOM_NONE;
  std::uint8_t format = 0;
  std::vector<std::uint8_t> bytes;
};

// FNV-1a
std::uint64_t hashOf(const std::vector<std::uint8_t> &bytes) {
  std::uint64_t hash = 0xcbf29ce484222325;
  for (const auto byte : bytes) {
    hash = (hash ^ byte) * 0x100000001b3;
  }
  return hash;
}

class SelectionRequestor {
public:
  void get(const std::string &target, bool obsolete) {
    const auto property = obsolete ? client_.atom(target) : transfer_;
    if (ask(target, property, XCB_CURRENT_TIME, obsolete) == XCB_ATOM_NONE) {
      std::cout << target << ": refused" << std::endl;
    } else {
      print(target, takeWhole(property));
    }
  }

  void multiple(const std::vector<std::string> &targets) {
    std::vector<xcb_atom_t> pairs;
    for (std::size_t index = 0; index < targets.size(); ++index) {
      pairs.push_back(client_.atom(targets[index]));
      pairs.push_back(client_.atom("PLACE_" + std::to_string(index)));
    }
    xcb_change_property(client_.connection, XCB_PROP_MODE_REPLACE, client_.window, transfer_,
                        client_.atom("ATOM_PAIR"), 32, static_cast<std::uint32_t>(pairs.size()),
                        pairs.data());
    if (ask("MULTIPLE", transfer_) == XCB_ATOM_NONE) {
      std::cout << "MULTIPLE: refused" << std::endl;
      return;
    }
    const auto answer = atomsOf(take(transfer_));
    for (std::size_t index = 0; index < targets.size(); ++index) {
      if (answer.at(2 * index + 1) == XCB_ATOM_NONE) {
        std::cout << targets[index] << ": refused" << std::endl;
      } else {
        print(targets[index], takeWhole(pairs[2 * index + 1]));
      }
    }
  }

  void list() {
    std::cout << "targets:";
    if (ask("TARGETS", transfer_) != XCB_ATOM_NONE) {
      for (const auto atom : atomsOf(take(transfer_))) {
        std::cout << ' ' << client_.name(atom);
      }
    }
    std::cout << std::endl;
  }

  void times() {
    const auto now = client_.serverTime();
    ask("TIMESTAMP", transfer_);
    const auto since = atomsOf(take(transfer_)).at(0);
    const bool refused = ask("TARGETS", transfer_, since - 1) == XCB_ATOM_NONE;
    const bool given = ask("TARGETS", transfer_, since) != XCB_ATOM_NONE;
    std::cout << (since != 0 && since <= now && refused && given ? "in time" : "out of time") << std::endl;
  }

  void takeOneIncrement(const std::string &target) {
    ask(target, transfer_);
    take(transfer_);
    waitForNewValue(transfer_);
  }

private:
  xcb_atom_t ask(const std::string &target, xcb_atom_t property, xcb_timestamp_t time = XCB_CURRENT_TIME,
                 bool obsolete = false) {
    newValues_.clear();
    xcb_convert_selection(client_.connection, client_.window, client_.atom("CLIPBOARD"), client_.atom(target),
                          obsolete ? xcb_atom_t{XCB_ATOM_NONE} : property, time);
    for (;;) {
      const auto event = client_.nextEvent();
      if ((event->response_type & 0x7F) == XCB_SELECTION_NOTIFY) {
        // New values from here on are increments.
        newValues_.clear();
        return reinterpret_cast<const xcb_selection_notify_event_t &>(*event).property;
      }
    }
  }

  Property take(xcb_atom_t property) const {
    const Owned<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(client_.connection,
                               xcb_get_property(client_.connection, 1, client_.window, property,
                                                XCB_GET_PROPERTY_TYPE_ANY, 0, 1U << 28),
                               nullptr));
    const auto *const bytes = static_cast<const std::uint8_t *>(xcb_get_property_value(reply.get()));
    return {reply->type, reply->format, {bytes, bytes + xcb_get_property_value_length(reply.get())}};
  }

  void waitForNewValue(xcb_atom_t property) {
    while (newValues_.erase(property) == 0) {
      const auto event = client_.nextEvent();
      const auto &change = reinterpret_cast<const xcb_property_notify_event_t &>(*event);
      if ((event->response_type & 0x7F) == XCB_PROPERTY_NOTIFY && change.state == XCB_PROPERTY_NEW_VALUE) {
        newValues_.insert(change.atom);
      }
    }
  }

  Property takeWhole(xcb_atom_t property) {
    auto whole = take(property);
    if (whole.type == client_.atom("INCR")) {
      whole.bytes.clear();
      for (;;) {
        waitForNewValue(property);
        const auto part = take(property);
        if (part.bytes.empty()) {
          break;
        }
        whole.type = part.type;
        whole.format = part.format;
        whole.bytes.insert(whole.bytes.end(), part.bytes.begin(), part.bytes.end());
      }
    }
    return whole;
  }

  static std::vector<xcb_atom_t> atomsOf(const Property &property) {
    std::vector<xcb_atom_t> atoms(property.bytes.size() / sizeof(xcb_atom_t));
    std::memcpy(atoms.data(), property.bytes.data(), atoms.size() * sizeof(xcb_atom_t));
    return atoms;
  }

  void print(const std::string &target, const Property &property) const {
    std::cout << target << ": " << client_.name(property.type) << ' ' << int{property.format} << ' '
              << property.bytes.size() << ' ' << std::hex << hashOf(property.bytes) << std::dec << std::endl;
  }

  SelectionClient client_;
  const xcb_atom_t transfer_ = client_.atom("TRANSFER");
  std::set<xcb_atom_t> newValues_;
};

void run(const std::vector<std::string> &words) {
  SelectionRequestor requestor;
  for (std::size_t index = 0; index < words.size(); ++index) {
    const auto &word = words[index];
    if (word == "list") {
      requestor.list();
    } else if (word == "times") {
      requestor.times();
    } else if (word == "multiple") {
      std::vector<std::string> targets;
      while (words.at(++index) != "end") {
        targets.push_back(words[index]);
      }
      requestor.multiple(targets);
    } else if (word == "get" || word == "get-obsolete") {
      requestor.get(words.at(++index), word == "get-obsolete");
    } else if (word == "stall" || word == "die") {
      requestor.takeOneIncrement(words.at(++index));
      if (word == "die") {
        _exit(0);
      }
      std::cout << "stalled" << std::endl;
      std::cin.get();
    } else {
      throw std::invalid_argument("no such word: " + word);
    }
  }
}

}  // namespace
}  // namespace lumiwren::testing

int main(int argc, char **argv) {
  try {
    lumiwren::testing::run({argv + 1, argv + argc});
  } catch (const std::exception &error) {
    std::cerr << "selection_requestor: " << error.what() << '\n';
    return 1;
  }
}
