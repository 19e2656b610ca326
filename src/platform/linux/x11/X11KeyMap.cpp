#include "platform/linux/x11/X11KeyMap.h"

#include "platform/KeyCodes.h"
#include "platform/linux/EvdevKeyCodes.h"
#include "platform/linux/x11/XKBProtocol.h"
#include "platform/linux/x11/XReply.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <utility>

namespace lumiwren {
namespace {

constexpr std::uint32_t largestGroupCount = 4;

auto isOneOf(KeySym left, KeySym right) {
  return [left, right](KeySym symbol) { return symbol == left || symbol == right; };
}

/// The group that a key uses while `group` is active (the X Keyboard Extension's out-of-range rule).
std::uint32_t effectiveGroup(std::uint8_t groupInfo, std::uint32_t count, std::uint32_t group) {
  if (group < count) {
    return group;
  }
  switch (groupInfo & 0xc0U) {
    case 0x40U:  // clamp
      return count - 1;
    case 0x80U: {  // redirect
      const std::uint32_t target = (groupInfo >> 4U) & 0x3U;
      return target < count ? target : 0;
    }
    default:
      return group % count;
  }
}

}  // namespace

X11KeyMap::X11KeyMap(std::array<Key, 256> keys) : keys_(std::move(keys)) {
  for (std::size_t keycode = 0; keycode < keys_.size(); ++keycode) {
    const Key &key = keys_.at(keycode);
    const auto types = [&key](auto predicate) {
      return std::any_of(key.unshifted.begin(), key.unshifted.end(), predicate);
    };
    modifierKeys_[keycode] = key.modifiers != 0 || types(isModifierSymbol);
    lockKeys_[keycode] = types(isLockSymbol);
    if (types(isOneOf(keySym::altL, keySym::altR))) {
      altModifiers_ |= key.modifiers;
    }
    if (types(isOneOf(keySym::superL, keySym::superR))) {
      superModifiers_ |= key.modifiers;
    }
    if (types([](KeySym symbol) { return symbol == keySym::numLock; })) {
      numLockModifiers_ |= key.modifiers;
    }
  }
}

std::optional<X11KeyMap> X11KeyMap::read(xcb_connection_t *connection) {
  const std::uint16_t parts = XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;
  const XReply<xcb_xkb_get_map_reply_t> reply(
      xcb_xkb_get_map_reply(connection,
                            xcb_xkb_get_map(connection, XCB_XKB_ID_USE_CORE_KBD, parts, 0, 0, 0, 0, 0, 0, 0,
                                            0, 0, 0, 0, 0, 0, 0, 0, 0),
                            nullptr));
  if (!reply) {
    return std::nullopt;
  }
  const auto *data = static_cast<const std::uint8_t *>(xcb_xkb_get_map_map(reply.get()));
  xcb_xkb_get_map_map_t map{};
  xcb_xkb_get_map_map_unpack(data, reply->nTypes, reply->nKeySyms, reply->nKeyActions, reply->totalActions,
                             reply->totalKeyBehaviors, reply->virtualMods, reply->totalKeyExplicit,
                             reply->totalModMapKeys, reply->totalVModMapKeys, reply->present, &map);
  std::array<Key, 256> keys{};
  auto symbols = xcb_xkb_get_map_map_syms_rtrn_iterator(reply.get(), &map);
  for (std::size_t keycode = reply->firstKeySym; symbols.rem > 0 && keycode < keys.size();
       ++keycode, xcb_xkb_key_sym_map_next(&symbols)) {
    const xcb_xkb_key_sym_map_t *source = symbols.data;
    const xcb_keysym_t *table = xcb_xkb_key_sym_map_syms(source);
    const auto length = static_cast<std::uint32_t>(xcb_xkb_key_sym_map_syms_length(source));
    Key &key = keys.at(keycode);
    key.groupInfo = source->groupInfo;
    const auto count = std::min<std::size_t>(source->groupInfo & 0x0fU, largestGroupCount);
    for (std::size_t group = 0; group < count && group * source->width < length; ++group) {
      key.unshifted.push_back(table[group * source->width]);
    }
  }
  auto modifiers = xcb_xkb_get_map_map_modmap_rtrn_iterator(reply.get(), &map);
  for (; modifiers.rem > 0; xcb_xkb_key_mod_map_next(&modifiers)) {
    keys.at(modifiers.data->keycode).modifiers = modifiers.data->mods;
  }
  return X11KeyMap(std::move(keys));
}

KeySym X11KeyMap::symbol(xcb_keycode_t keycode, std::uint32_t group) const {
  const Key &key = keys_.at(keycode);
  const auto count = static_cast<std::uint32_t>(key.unshifted.size());
  return count == 0 ? 0 : key.unshifted[effectiveGroup(key.groupInfo, count, group)];
}

std::uint64_t X11KeyMap::modifierFlags(std::uint8_t realModifiers) const {
  std::uint64_t flags = 0;
  const auto map = [&](std::uint8_t mask, std::uint64_t flag) {
    if ((realModifiers & mask) != 0) {
      flags |= flag;
    }
  };
  map(XCB_MOD_MASK_LOCK, modifier::capsLock);
  map(XCB_MOD_MASK_SHIFT, modifier::shift);
  map(XCB_MOD_MASK_CONTROL, modifier::control);
  map(altModifiers_, modifier::option);
  map(superModifiers_, modifier::command);
  return flags;
}

std::uint8_t X11KeyMap::disturbingModifiers() const {
  return static_cast<std::uint8_t>(~(XCB_MOD_MASK_LOCK | numLockModifiers_));
}

std::optional<xcb_keycode_t> X11KeyMap::keyTyping(KeySym wanted, std::uint32_t group) const {
  for (std::size_t keycode = 0; keycode < keys_.size(); ++keycode) {
    if (symbol(static_cast<xcb_keycode_t>(keycode), group) == wanted) {
      return static_cast<xcb_keycode_t>(keycode);
    }
  }
  return std::nullopt;
}

xcb_keycode_t X11KeyMap::controlKey() const {
  for (const KeySym wanted : {keySym::controlL, keySym::controlR}) {
    const auto key = keyTyping(wanted, 0);
    if (key && (keys_.at(*key).modifiers & XCB_MOD_MASK_CONTROL) != 0) {
      return *key;
    }
  }
  return KEY_LEFTCTRL + evdevOffset;
}

xcb_keycode_t X11KeyMap::copyKey(std::uint32_t activeGroup) const {
  for (const std::uint32_t group : {activeGroup, 0U, 1U, 2U, 3U}) {
    if (const auto key = keyTyping(keySym::c, group)) {
      return *key;
    }
  }
  return keyTyping(keySym::insert, activeGroup).value_or(KEY_C + evdevOffset);
}

}  // namespace lumiwren
