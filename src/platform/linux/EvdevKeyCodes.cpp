#include "platform/linux/EvdevKeyCodes.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <iterator>

namespace lumiwren {
namespace {

struct Pair {
  std::uint16_t evdev;
  std::uint16_t keyCode;
};

// Sorted by evdev code.
constexpr Pair pairs[] = {
    {KEY_ESC, 53},
    {KEY_1, 18},
    {KEY_2, 19},
    {KEY_3, 20},
    {KEY_4, 21},
    {KEY_5, 23},
    {KEY_6, 22},
    {KEY_7, 26},
    {KEY_8, 28},
    {KEY_9, 25},
    {KEY_0, 29},
    {KEY_MINUS, 27},
    {KEY_EQUAL, 24},
    {KEY_BACKSPACE, 51},
    {KEY_TAB, 48},
    {KEY_Q, 12},
    {KEY_W, 13},
    {KEY_E, 14},
    {KEY_R, 15},
    {KEY_T, 17},
    {KEY_Y, 16},
    {KEY_U, 32},
    {KEY_I, 34},
    {KEY_O, 31},
    {KEY_P, 35},
    {KEY_LEFTBRACE, 33},
    {KEY_RIGHTBRACE, 30},
    {KEY_ENTER, 36},
    {KEY_LEFTCTRL, 59},
    {KEY_A, 0},
    {KEY_S, 1},
    {KEY_D, 2},
    {KEY_F, 3},
    {KEY_G, 5},
    {KEY_H, 4},
    {KEY_J, 38},
    {KEY_K, 40},
    {KEY_L, 37},
    {KEY_SEMICOLON, 41},
    {KEY_APOSTROPHE, 39},
    {KEY_GRAVE, 50},
    {KEY_LEFTSHIFT, 56},
    {KEY_BACKSLASH, 42},
    {KEY_Z, 6},
    {KEY_X, 7},
    {KEY_C, 8},
    {KEY_V, 9},
    {KEY_B, 11},
    {KEY_N, 45},
    {KEY_M, 46},
    {KEY_COMMA, 43},
    {KEY_DOT, 47},
    {KEY_SLASH, 44},
    {KEY_RIGHTSHIFT, 60},
    {KEY_KPASTERISK, 67},
    {KEY_LEFTALT, 58},
    {KEY_SPACE, 49},
    {KEY_CAPSLOCK, 57},
    {KEY_F1, 122},
    {KEY_F2, 120},
    {KEY_F3, 99},
    {KEY_F4, 118},
    {KEY_F5, 96},
    {KEY_F6, 97},
    {KEY_F7, 98},
    {KEY_F8, 100},
    {KEY_F9, 101},
    {KEY_F10, 109},
    {KEY_NUMLOCK, 71},      // Clear, in the same place
    {KEY_SCROLLLOCK, 107},  // F14, in the same place
    {KEY_KP7, 89},
    {KEY_KP8, 91},
    {KEY_KP9, 92},
    {KEY_KPMINUS, 78},
    {KEY_KP4, 86},
    {KEY_KP5, 87},
    {KEY_KP6, 88},
    {KEY_KPPLUS, 69},
    {KEY_KP1, 83},
    {KEY_KP2, 84},
    {KEY_KP3, 85},
    {KEY_KP0, 82},
    {KEY_KPDOT, 65},
    {KEY_102ND, 10},
    {KEY_F11, 103},
    {KEY_F12, 111},
    {KEY_RO, 94},
    {KEY_KPENTER, 76},
    {KEY_RIGHTCTRL, 62},
    {KEY_KPSLASH, 75},
    {KEY_SYSRQ, 105},  // F13, in the same place
    {KEY_RIGHTALT, 61},
    {KEY_HOME, 115},
    {KEY_UP, 126},
    {KEY_PAGEUP, 116},
    {KEY_LEFT, 123},
    {KEY_RIGHT, 124},
    {KEY_END, 119},
    {KEY_DOWN, 125},
    {KEY_PAGEDOWN, 121},
    {KEY_INSERT, 114},  // Help, in the same place
    {KEY_DELETE, 117},
    {KEY_MUTE, 74},
    {KEY_VOLUMEDOWN, 73},
    {KEY_VOLUMEUP, 72},
    {KEY_KPEQUAL, 81},
    {KEY_PAUSE, 113},  // F15, in the same place
    {KEY_KPCOMMA, 95},
    {KEY_HANGEUL, 104},
    {KEY_HANJA, 102},
    {KEY_YEN, 93},
    {KEY_LEFTMETA, 55},
    {KEY_RIGHTMETA, 54},
    {KEY_COMPOSE, 110},
    {KEY_F13, 105},
    {KEY_F14, 107},
    {KEY_F15, 113},
    {KEY_F16, 106},
    {KEY_F17, 64},
    {KEY_F18, 79},
    {KEY_F19, 80},
    {KEY_F20, 90},
    {KEY_FN, 63},
};

constexpr bool isSorted() {
  return std::is_sorted(std::begin(pairs), std::end(pairs),
                        [](const Pair &left, const Pair &right) { return left.evdev < right.evdev; });
}
static_assert(isSorted());

}  // namespace

std::optional<std::uint16_t> keyCodeFromEvdev(std::uint32_t evdevCode) {
  const auto *found =
      std::lower_bound(std::begin(pairs), std::end(pairs), evdevCode,
                       [](const Pair &pair, std::uint32_t code) { return pair.evdev < code; });
  return found != std::end(pairs) && found->evdev == evdevCode ? std::optional(found->keyCode) : std::nullopt;
}

std::optional<std::uint16_t> evdevFromKeyCode(std::uint16_t keyCode) {
  // From the end: the function keys proper come after those that stand in for them.
  const auto found = std::find_if(std::rbegin(pairs), std::rend(pairs),
                                  [keyCode](const Pair &pair) { return pair.keyCode == keyCode; });
  return found != std::rend(pairs) ? std::optional(found->evdev) : std::nullopt;
}

}  // namespace lumiwren
