#include "platform/linux/x11/X11KeyMap.h"

#include "platform/KeyCodes.h"
#include "platform/linux/x11/X11SelectionCopy.h"

#include <gtest/gtest.h>

#include <array>

namespace lumiwren::testing {
namespace {

constexpr KeySym cyrillicEs = 0x6d3;
constexpr std::uint8_t shiftMask = 1;
constexpr std::uint8_t lockMask = 2;
constexpr std::uint8_t controlMask = 4;
constexpr std::uint8_t mod1Mask = 8;
constexpr std::uint8_t mod2Mask = 16;
constexpr std::uint8_t mod4Mask = 64;

constexpr std::uint8_t clamp = 0x40;
constexpr std::uint8_t redirectToSecond = 0x90;

/// A keyboard with a few keys: 10 types c in its second layout only, 54 in the first only.
class X11KeyMapTest : public ::testing::Test {
protected:
  X11KeyMapTest() {
    keys_[10] = {0, 2, {0x6a, keySym::c}};
    keys_[20] = {0, 0, {}};
    keys_[37] = {controlMask, 1, {keySym::controlL}};
    keys_[38] = {0, 2, {0x65, cyrillicEs}};
    keys_[50] = {shiftMask, 1, {0xffe1}};
    keys_[54] = {0, 2, {keySym::c, cyrillicEs}};
    keys_[64] = {mod1Mask, 1, {keySym::altL}};
    keys_[66] = {lockMask, 1, {keySym::capsLock}};
    keys_[77] = {mod2Mask, 1, {keySym::numLock}};
    keys_[108] = {0, 1, {0xfe03}};
    keys_[133] = {mod4Mask, 1, {keySym::superL}};
  }
  X11KeyMap map() const { return X11KeyMap(keys_); }

  std::array<X11KeyMap::Key, 256> keys_{};
};

TEST_F(X11KeyMapTest, ModifierFlagsFollowTheKeysThatSetThem) {
  EXPECT_EQ(map().modifierFlags(0), 0U);
  EXPECT_EQ(map().modifierFlags(shiftMask), modifier::shift);
  EXPECT_EQ(map().modifierFlags(lockMask), modifier::capsLock);
  EXPECT_EQ(map().modifierFlags(controlMask), modifier::control);
  EXPECT_EQ(map().modifierFlags(mod1Mask), modifier::option);
  EXPECT_EQ(map().modifierFlags(mod2Mask), 0U);
  EXPECT_EQ(map().modifierFlags(mod4Mask), modifier::command);
  EXPECT_EQ(map().modifierFlags(0xff),
            modifier::shift | modifier::capsLock | modifier::control | modifier::option | modifier::command);
  std::swap(keys_[64].modifiers, keys_[133].modifiers);
  EXPECT_EQ(map().modifierFlags(mod1Mask), modifier::command);
}

TEST_F(X11KeyMapTest, OnlyCapsLockAndNumLockDoNotDisturb) {
  EXPECT_EQ(map().disturbingModifiers(), 0xff & ~(lockMask | mod2Mask));
}

TEST_F(X11KeyMapTest, KeysThatModifyAndKeysThatLock) {
  KeySet modifiers;
  for (const std::size_t key : {37, 50, 64, 66, 77, 108, 133}) {
    modifiers.set(key);
  }
  EXPECT_EQ(map().modifierKeys(), modifiers);
  KeySet locks;
  locks.set(66).set(77);
  EXPECT_EQ(map().lockKeys(), locks);
}

TEST_F(X11KeyMapTest, AKeyWithFewerLayoutsThanTheKeyboardFollowsItsRule) {
  EXPECT_EQ(map().symbol(54, 0), keySym::c);
  EXPECT_EQ(map().symbol(54, 1), cyrillicEs);
  EXPECT_EQ(map().symbol(54, 2), keySym::c) << "wraps around";
  keys_[54].groupInfo = clamp | 2;
  EXPECT_EQ(map().symbol(54, 3), cyrillicEs);
  keys_[54].groupInfo = redirectToSecond | 2;
  EXPECT_EQ(map().symbol(54, 2), cyrillicEs);
  EXPECT_EQ(map().symbol(20, 0), 0U);
}

TEST_F(X11KeyMapTest, TheCopyKeyIsThatOfTheActiveLayoutElseOfAnotherElseInsert) {
  EXPECT_EQ(map().copyKey(0), 54);
  EXPECT_EQ(map().copyKey(1), 10);
  keys_[10] = {};
  EXPECT_EQ(map().copyKey(1), 54);
  keys_[54] = {};
  keys_[118] = {0, 1, {keySym::insert}};
  EXPECT_EQ(map().copyKey(0), 118);
  keys_[118] = {};
  EXPECT_EQ(map().copyKey(0), 54);
}

TEST_F(X11KeyMapTest, TheControlKeyIsTheOneThatIsControlNow) {
  EXPECT_EQ(map().controlKey(), 37);
  keys_[37] = {lockMask, 1, {keySym::capsLock}};
  keys_[66] = {controlMask, 1, {keySym::controlL}};
  EXPECT_EQ(map().controlKey(), 66);
}

TEST_F(X11KeyMapTest, TheCopyChordReleasesLettersThenModifiersAndNoLocks) {
  KeySet held;
  held.set(38).set(50).set(64).set(66).set(108);
  const KeyChord expected{.strokes = {{KeyDirection::Up, 38},
                                      {KeyDirection::Up, 50},
                                      {KeyDirection::Up, 64},
                                      {KeyDirection::Up, 108},
                                      {KeyDirection::Down, 37},
                                      {KeyDirection::Down, 54},
                                      {KeyDirection::Up, 54},
                                      {KeyDirection::Up, 37}},
                          .lockedModifiers = shiftMask,
                          .breaksLatches = true};
  EXPECT_EQ(copyChord(map(), held, 0, shiftMask | lockMask | mod2Mask, mod1Mask), expected);
  EXPECT_EQ(copyChord(map(), {}, 0, lockMask, 0).strokes.size(), 4U);
  EXPECT_EQ(copyChord(map(), {}, 0, lockMask, 0).lockedModifiers, 0);
}

}  // namespace
}  // namespace lumiwren::testing
