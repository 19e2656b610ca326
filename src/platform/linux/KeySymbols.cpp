#include "platform/linux/KeySymbols.h"

#include "platform/KeyCodes.h"
#include "platform/linux/EvdevKeyCodes.h"

namespace lumiwren {
namespace {

constexpr KeySym firstModifier = 0xffe1;      // Shift_L
constexpr KeySym lastModifier = 0xffee;       // Hyper_R
constexpr KeySym firstLevelOrGroup = 0xfe01;  // ISO_Lock
constexpr KeySym lastLevelOrGroup = 0xfe13;   // ISO_Level5_Lock

}  // namespace

bool isLockSymbol(KeySym symbol) {
  switch (symbol) {
    case keySym::scrollLock:
    case keySym::numLock:
    case keySym::capsLock:
    case keySym::shiftLock:
    case 0xfe01:  // ISO_Lock
    case 0xfe05:  // ISO_Level3_Lock
    case 0xfe07:  // ISO_Group_Lock
    case 0xfe09:  // ISO_Next_Group_Lock
    case 0xfe0b:  // ISO_Prev_Group_Lock
    case 0xfe0d:  // ISO_First_Group_Lock
    case 0xfe0f:  // ISO_Last_Group_Lock
    case 0xfe13:  // ISO_Level5_Lock
      return true;
    default:
      return false;
  }
}

bool isModifierSymbol(KeySym symbol) {
  return (symbol >= firstModifier && symbol <= lastModifier) ||
         (symbol >= firstLevelOrGroup && symbol <= lastLevelOrGroup) || symbol == keySym::modeSwitch ||
         isLockSymbol(symbol);
}

std::optional<std::uint16_t> pressedKeyCode(std::uint32_t evdevCode, KeySym symbol) {
  if (isModifierSymbol(symbol)) {
    return std::nullopt;
  }
  return symbol == keySym::escape ? keyCode::escape : keyCodeFromEvdev(evdevCode);
}

}  // namespace lumiwren
