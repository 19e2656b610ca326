#include "platform/linux/EvdevKeyCodes.h"

#include "platform/KeyCodes.h"
#include "platform/linux/KeySymbols.h"

#include <gtest/gtest.h>

#include <linux/input-event-codes.h>

#include <set>

namespace lumiwren::testing {
namespace {

// The numbering's own table, by what the keys are called on an ANSI keyboard.
constexpr struct {
  std::uint32_t evdev;
  std::uint16_t keyCode;
} table[] = {
    {KEY_A, 0x00},        {KEY_S, 0x01},          {KEY_D, 0x02},          {KEY_F, 0x03},
    {KEY_H, 0x04},        {KEY_G, 0x05},          {KEY_Z, 0x06},          {KEY_X, 0x07},
    {KEY_C, 0x08},        {KEY_V, 0x09},          {KEY_102ND, 0x0a},      {KEY_B, 0x0b},
    {KEY_Q, 0x0c},        {KEY_W, 0x0d},          {KEY_E, 0x0e},          {KEY_R, 0x0f},
    {KEY_Y, 0x10},        {KEY_T, 0x11},          {KEY_1, 0x12},          {KEY_2, 0x13},
    {KEY_3, 0x14},        {KEY_4, 0x15},          {KEY_6, 0x16},          {KEY_5, 0x17},
    {KEY_EQUAL, 0x18},    {KEY_9, 0x19},          {KEY_7, 0x1a},          {KEY_MINUS, 0x1b},
    {KEY_8, 0x1c},        {KEY_0, 0x1d},          {KEY_RIGHTBRACE, 0x1e}, {KEY_O, 0x1f},
    {KEY_U, 0x20},        {KEY_LEFTBRACE, 0x21},  {KEY_I, 0x22},          {KEY_P, 0x23},
    {KEY_ENTER, 0x24},    {KEY_L, 0x25},          {KEY_J, 0x26},          {KEY_APOSTROPHE, 0x27},
    {KEY_K, 0x28},        {KEY_SEMICOLON, 0x29},  {KEY_BACKSLASH, 0x2a},  {KEY_COMMA, 0x2b},
    {KEY_SLASH, 0x2c},    {KEY_N, 0x2d},          {KEY_M, 0x2e},          {KEY_DOT, 0x2f},
    {KEY_TAB, 0x30},      {KEY_SPACE, 0x31},      {KEY_GRAVE, 0x32},      {KEY_BACKSPACE, 0x33},
    {KEY_ESC, 0x35},      {KEY_RIGHTMETA, 0x36},  {KEY_LEFTMETA, 0x37},   {KEY_LEFTSHIFT, 0x38},
    {KEY_CAPSLOCK, 0x39}, {KEY_LEFTALT, 0x3a},    {KEY_LEFTCTRL, 0x3b},   {KEY_RIGHTSHIFT, 0x3c},
    {KEY_RIGHTALT, 0x3d}, {KEY_RIGHTCTRL, 0x3e},  {KEY_FN, 0x3f},         {KEY_F17, 0x40},
    {KEY_KPDOT, 0x41},    {KEY_KPASTERISK, 0x43}, {KEY_KPPLUS, 0x45},     {KEY_NUMLOCK, 0x47},
    {KEY_VOLUMEUP, 0x48}, {KEY_VOLUMEDOWN, 0x49}, {KEY_MUTE, 0x4a},       {KEY_KPSLASH, 0x4b},
    {KEY_KPENTER, 0x4c},  {KEY_KPMINUS, 0x4e},    {KEY_F18, 0x4f},        {KEY_F19, 0x50},
    {KEY_KPEQUAL, 0x51},  {KEY_KP0, 0x52},        {KEY_KP1, 0x53},        {KEY_KP2, 0x54},
    {KEY_KP3, 0x55},      {KEY_KP4, 0x56},        {KEY_KP5, 0x57},        {KEY_KP6, 0x58},
    {KEY_KP7, 0x59},      {KEY_F20, 0x5a},        {KEY_KP8, 0x5b},        {KEY_KP9, 0x5c},
    {KEY_YEN, 0x5d},      {KEY_RO, 0x5e},         {KEY_KPCOMMA, 0x5f},    {KEY_F5, 0x60},
    {KEY_F6, 0x61},       {KEY_F7, 0x62},         {KEY_F3, 0x63},         {KEY_F8, 0x64},
    {KEY_F9, 0x65},       {KEY_HANJA, 0x66},      {KEY_F11, 0x67},        {KEY_HANGEUL, 0x68},
    {KEY_F13, 0x69},      {KEY_F16, 0x6a},        {KEY_F14, 0x6b},        {KEY_F10, 0x6d},
    {KEY_COMPOSE, 0x6e},  {KEY_F12, 0x6f},        {KEY_F15, 0x71},        {KEY_INSERT, 0x72},
    {KEY_HOME, 0x73},     {KEY_PAGEUP, 0x74},     {KEY_DELETE, 0x75},     {KEY_F4, 0x76},
    {KEY_END, 0x77},      {KEY_F2, 0x78},         {KEY_PAGEDOWN, 0x79},   {KEY_F1, 0x7a},
    {KEY_LEFT, 0x7b},     {KEY_RIGHT, 0x7c},      {KEY_DOWN, 0x7d},       {KEY_UP, 0x7e},
};

TEST(EvdevKeyCodes, MapsTheWholeKeyboardBothWays) {
  for (const auto &[evdev, keyCode] : table) {
    EXPECT_EQ(keyCodeFromEvdev(evdev), keyCode) << evdev;
    EXPECT_EQ(evdevFromKeyCode(keyCode), evdev) << keyCode;
  }
}

TEST(EvdevKeyCodes, KeysOfAPCStandInForTheFunctionKeysInTheirPlace) {
  EXPECT_EQ(keyCodeFromEvdev(KEY_SYSRQ), keyCodeFromEvdev(KEY_F13));
  EXPECT_EQ(keyCodeFromEvdev(KEY_SCROLLLOCK), keyCodeFromEvdev(KEY_F14));
  EXPECT_EQ(keyCodeFromEvdev(KEY_PAUSE), keyCodeFromEvdev(KEY_F15));
}

TEST(EvdevKeyCodes, KnowsNoOtherKeys) {
  std::set<std::uint32_t> known{KEY_SYSRQ, KEY_SCROLLLOCK, KEY_PAUSE};
  std::set<std::uint16_t> knownCodes;
  for (const auto &[evdev, keyCode] : table) {
    known.insert(evdev);
    knownCodes.insert(keyCode);
  }
  for (std::uint32_t code = 0; code < 0x300; ++code) {
    EXPECT_EQ(keyCodeFromEvdev(code).has_value(), known.contains(code)) << code;
    EXPECT_EQ(evdevFromKeyCode(static_cast<std::uint16_t>(code)).has_value(),
              knownCodes.contains(static_cast<std::uint16_t>(code)))
        << code;
  }
}

TEST(KeySymbols, KeysThatOnlyModifyAreNoPresses) {
  for (const KeySym symbol : {0xffe1U, 0xffe4U, 0xffe5U, 0xffe7U, 0xffe9U, 0xffecU, 0xffeeU, 0xfe03U, 0xfe08U,
                              0xfe13U, 0xff7eU, 0xff7fU, 0xff14U}) {
    EXPECT_EQ(pressedKeyCode(KEY_E, symbol), std::nullopt) << symbol;
  }
}

TEST(KeySymbols, AKeyIsKnownByItsPlaceAndEscapeByItsMeaning) {
  EXPECT_EQ(pressedKeyCode(KEY_E, 0x6c5), keyCode::e);  // Cyrillic
  EXPECT_EQ(pressedKeyCode(KEY_E, 0), keyCode::e);
  EXPECT_EQ(pressedKeyCode(KEY_CAPSLOCK, keySym::escape), keyCode::escape);
  EXPECT_EQ(pressedKeyCode(KEY_ESC, keySym::escape), keyCode::escape);
  EXPECT_EQ(pressedKeyCode(KEY_BRIGHTNESSUP, 0), std::nullopt);
}

TEST(KeySymbols, LocksAreModifiersThatStay) {
  for (const KeySym symbol :
       {keySym::capsLock, keySym::numLock, keySym::scrollLock, keySym::shiftLock, KeySym{0xfe08 - 1}}) {
    EXPECT_TRUE(isLockSymbol(symbol)) << symbol;
    EXPECT_TRUE(isModifierSymbol(symbol)) << symbol;
  }
  EXPECT_FALSE(isLockSymbol(keySym::altL));
  EXPECT_FALSE(isModifierSymbol(keySym::c));
}

}  // namespace
}  // namespace lumiwren::testing
