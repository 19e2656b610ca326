#include "base/Signal.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace lumiwren {
namespace {

TEST(SignalTest, TellsObserversInTheOrderInWhichTheyCame) {
  Signal<int> signal;
  std::string told;
  const auto a = signal.observe([&](int value) { told += "a" + std::to_string(value); });
  const auto b = signal.observe([&](int value) { told += "b" + std::to_string(value); });
  signal.notify(1);
  signal.notify(2);
  EXPECT_EQ(told, "a1b1a2b2");
}

TEST(SignalTest, TellsNobodyWhoseHandleHasEnded) {
  Signal<> signal;
  int told = 0;
  auto observing = signal.observe([&] { ++told; });
  observing.reset();
  signal.notify();
  EXPECT_EQ(told, 0);
}

TEST(SignalTest, AnObserverMayEndItselfAndOthersWhileBeingTold) {
  Signal<> signal;
  std::string told;
  Handle a;
  Handle b;
  a = signal.observe([&] {
    told += "a";
    a.reset();
    b.reset();
  });
  b = signal.observe([&] { told += "b"; });
  signal.notify();
  signal.notify();
  EXPECT_EQ(told, "a");
}

TEST(SignalTest, AnObserverThatComesWhileOthersAreToldIsToldOfTheNextChange) {
  Signal<> signal;
  std::string told;
  Handle late;
  const auto early = signal.observe([&] {
    told += "e";
    if (!late) {
      late = signal.observe([&] { told += "l"; });
    }
  });
  signal.notify();
  EXPECT_EQ(told, "e");
  signal.notify();
  EXPECT_EQ(told, "eel");
}

TEST(SignalTest, MayEndBeforeItsHandles) {
  auto signal = std::make_optional<Signal<>>();
  const auto observing = signal->observe([] {});
  signal.reset();
}

TEST(SignalTest, MayEndWhileObserversAreTold) {
  auto signal = std::make_unique<Signal<>>();
  int told = 0;
  const auto first = signal->observe([&] {
    ++told;
    signal.reset();
  });
  const auto second = signal->observe([&] { ++told; });
  signal->notify();
  EXPECT_EQ(told, 2);
}

}  // namespace
}  // namespace lumiwren
