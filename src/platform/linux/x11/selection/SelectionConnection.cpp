#include "platform/linux/x11/selection/SelectionConnection.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace lumiwren {

SelectionConnection::SelectionConnection() : connection_(xcb_connect(nullptr, nullptr)) {
  if (broken()) {
    throw std::runtime_error("no connection to the X server");
  }
  root_ = xcb_setup_roots_iterator(xcb_get_setup(get())).data->root;
  const auto atoms = intern({"CLIPBOARD", "TARGETS", "TIMESTAMP", "MULTIPLE", "ATOM_PAIR", "INCR",
                             "LUMIWREN_TRANSFER", "UTF8_STRING", "STRING", "ATOM", "INTEGER"});
  atoms_ = {atoms[0], atoms[1], atoms[2], atoms[3], atoms[4], atoms[5], atoms[6]};
}

xcb_window_t SelectionConnection::createWindow() {
  const xcb_window_t window = xcb_generate_id(get());
  const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_create_window(get(), XCB_COPY_FROM_PARENT, window, root_, -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                    XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
  return window;
}

xcb_window_t SelectionConnection::owner(xcb_atom_t selection) {
  const XReply<xcb_get_selection_owner_reply_t> reply(
      xcb_get_selection_owner_reply(get(), xcb_get_selection_owner(get(), selection), nullptr));
  return reply ? reply->owner : xcb_window_t{XCB_WINDOW_NONE};
}

void SelectionConnection::remember(const std::string &name, xcb_atom_t atom) {
  atomOf_.emplace(name, atom);
  nameOf_.emplace(atom, name);
}

std::vector<xcb_atom_t> SelectionConnection::intern(const std::vector<std::string> &names) {
  std::vector<std::pair<const std::string *, xcb_intern_atom_cookie_t>> asked;
  for (const auto &name : names) {
    if (!atomOf_.contains(name)) {
      asked.emplace_back(&name,
                         xcb_intern_atom(get(), 0, static_cast<std::uint16_t>(name.size()), name.data()));
    }
  }
  for (const auto &[name, cookie] : asked) {
    if (const XReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(get(), cookie, nullptr)); reply) {
      remember(*name, reply->atom);
    }
  }
  std::vector<xcb_atom_t> atoms;
  for (const auto &name : names) {
    const auto found = atomOf_.find(name);
    atoms.push_back(found == atomOf_.end() ? xcb_atom_t{XCB_ATOM_NONE} : found->second);
  }
  return atoms;
}

std::vector<std::string> SelectionConnection::names(const std::vector<xcb_atom_t> &atoms) {
  std::vector<std::pair<xcb_atom_t, xcb_get_atom_name_cookie_t>> asked;
  for (const auto atom : atoms) {
    if (atom != XCB_ATOM_NONE && !nameOf_.contains(atom)) {
      asked.emplace_back(atom, xcb_get_atom_name(get(), atom));
    }
  }
  for (const auto &[atom, cookie] : asked) {
    xcb_generic_error_t *error = nullptr;
    const XReply<xcb_get_atom_name_reply_t> reply(xcb_get_atom_name_reply(get(), cookie, &error));
    const XReply<xcb_generic_error_t> ownedError(error);
    if (reply) {
      remember({xcb_get_atom_name_name(reply.get()),
                static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))},
               atom);
    }
  }
  std::vector<std::string> names;
  for (const auto atom : atoms) {
    const auto found = nameOf_.find(atom);
    names.push_back(found == nameOf_.end() ? std::string() : found->second);
  }
  return names;
}

}  // namespace lumiwren
