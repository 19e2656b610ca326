#include "base/Secret.h"

#include <gtest/gtest.h>

#include <malloc.h>

#include <array>
#include <cstdlib>
#include <new>
#include <type_traits>

namespace {

constexpr std::string_view marker = "sk-marker";
thread_local bool isSearching = false;
thread_local int freedWithMarker = 0;

void freeAndLook(void *memory) noexcept {
  if (memory != nullptr && isSearching) {
    const std::string_view content(static_cast<const char *>(memory), malloc_usable_size(memory));
    freedWithMarker += content.find(marker) != std::string_view::npos ? 1 : 0;
  }
  std::free(memory);
}

}  // namespace

// What the tests below give back to the heap is searched for the secret.
void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
  return std::calloc(1, size);
}
void *operator new(std::size_t size) {
  void *memory = operator new(size, std::nothrow);
  return memory != nullptr ? memory : throw std::bad_alloc();
}
void operator delete(void *memory) noexcept {
  freeAndLook(memory);
}
void operator delete(void *memory, std::size_t) noexcept {
  freeAndLook(memory);
}

namespace lumiwren {
namespace {

static_assert(!std::is_convertible_v<std::string, Secret>);
static_assert(!std::is_convertible_v<Secret, std::string_view>);
static_assert(std::is_nothrow_move_constructible_v<Secret>);

// One that a string keeps within itself and one that it puts on the heap.
const std::array<std::size_t, 2> paddings{0, 500};

std::string secretText(std::size_t padding) {
  return std::string(marker) + std::string(padding, 'x');
}

/// How many pieces of memory were given back with the secret in them while `act` ran.
template <typename Act>
int leftOnHeap(Act act) {
  freedWithMarker = 0;
  isSearching = true;
  act();
  isSearching = false;
  return freedWithMarker;
}

TEST(SecretTest, TheHeapIsReallySearched) {
  EXPECT_EQ(leftOnHeap([] { const auto text = secretText(500); }), 1);
}

TEST(SecretTest, RevealsItsText) {
  for (const auto padding : paddings) {
    auto text = secretText(padding);
    const Secret secret(std::move(text));
    EXPECT_EQ(secret.reveal(), secretText(padding));
    EXPECT_EQ(secret, Secret::copyOf(secretText(padding)));
  }
  EXPECT_EQ(Secret().reveal(), "");
  EXPECT_EQ(Secret::copyOf(std::string_view("a\0b", 3)).reveal().size(), 3U);
}

TEST(SecretTest, TakingATextOverEmptiesIt) {
  for (const auto padding : paddings) {
    auto text = secretText(padding);
    const char *characters = text.data();
    const Secret secret(std::move(text));
    EXPECT_TRUE(text.empty());  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(std::string_view(characters, text.capacity()).find(marker), std::string_view::npos);
  }
}

TEST(SecretTest, DroppedItLeavesNothing) {
  std::string source = secretText(500);
  EXPECT_EQ(leftOnHeap([&] { const auto secret = Secret::copyOf(source); }), 0);
  alignas(Secret) std::array<char, sizeof(Secret)> place{};
  auto *secret = new (place.data()) Secret(Secret::copyOf(marker));
  ASSERT_NE(std::string_view(place.data(), place.size()).find(marker), std::string_view::npos);
  secret->~Secret();
  EXPECT_EQ(std::string_view(place.data(), place.size()).find(marker), std::string_view::npos);
  wipe(source);
}

TEST(SecretTest, ReplacedMovedAndCopiedItLeavesNothing) {
  std::string source = secretText(500);
  EXPECT_EQ(leftOnHeap([&] {
              auto secret = Secret::copyOf(source);
              const auto other = Secret::copyOf(std::string(2000, 'y'));
              secret = other;
              secret = Secret::copyOf(source);
              secret = Secret::copyOf("short");
              auto copy = Secret::copyOf(source);
              auto &same = copy;
              copy = same;
              EXPECT_EQ(copy.reveal(), source);
              const Secret moved(std::move(copy));
              EXPECT_EQ(moved.reveal(), source);
              EXPECT_EQ(copy.reveal(), "");  // NOLINT(bugprone-use-after-move)
            }),
            0);
  wipe(source);
}

TEST(SecretTest, AMovedShortSecretLeavesNothingInItsOldPlace) {
  alignas(Secret) std::array<char, sizeof(Secret)> place{};
  auto *secret = new (place.data()) Secret(Secret::copyOf(marker));
  const Secret moved(std::move(*secret));
  EXPECT_EQ(std::string_view(place.data(), place.size()).find(marker), std::string_view::npos);
  Secret assigned;
  *secret = Secret::copyOf(marker);
  assigned = std::move(*secret);
  EXPECT_EQ(std::string_view(place.data(), place.size()).find(marker), std::string_view::npos);
  secret->~Secret();
}

TEST(SecretTest, WipingCoversTheWholeCapacity) {
  auto text = secretText(500);
  text.resize(1);  // What is behind the end is still there.
  const char *characters = text.data();
  wipe(text);
  EXPECT_TRUE(text.empty());
  EXPECT_EQ(std::string_view(characters, text.capacity()).find("marker"), std::string_view::npos);
}

}  // namespace
}  // namespace lumiwren
