#include "platform/linux/x11/selection/PasteboardParcel.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <stdexcept>

namespace lumiwren {
namespace {

TEST(PasteboardParcel, UnpacksToWhatWasPacked) {
  const PasteboardContents contents{{"UTF8_STRING", {'t'}},
                                    {"TEXT", {'t', 0, 0xFF}, "COMPOUND_TEXT"},
                                    {"x-numbers", Bytes(800'000, 7), "INTEGER", 4},
                                    {"x-nothing", {}}};
  EXPECT_EQ(unpackParcel(packParcel(contents)), contents);
  EXPECT_EQ(unpackParcel(packParcel({})), PasteboardContents());
}

TEST(PasteboardParcel, EveryTruncationIsAnError) {
  const auto parcel = packParcel({{"UTF8_STRING", {'t', 'e', 'x', 't'}, "STRING"}});
  const auto size = lseek(parcel.get(), 0, SEEK_END);
  for (auto shorter = size - 1; shorter > 0; --shorter) {
    ASSERT_EQ(ftruncate(parcel.get(), shorter), 0);
    EXPECT_THROW(unpackParcel(parcel), std::runtime_error) << shorter;
  }
}

TEST(ParcelSocket, CarriesNumbersAndParcelsUntilOneEndCloses) {
  auto sockets = makeParcelSockets();
  EXPECT_FALSE(receiveMessage(sockets.holder));
  EXPECT_TRUE(sendMessage(sockets.program, 7, packParcel({{"STRING", {'t'}}})));
  EXPECT_TRUE(sendMessage(sockets.program, 8));
  const auto first = receiveMessage(sockets.holder);
  ASSERT_TRUE(first);
  EXPECT_EQ(first->number, 7U);
  EXPECT_EQ(unpackParcel(first->parcel), (PasteboardContents{{"STRING", {'t'}}}));
  const auto second = receiveMessage(sockets.holder);
  ASSERT_TRUE(second);
  EXPECT_EQ(second->number, 8U);
  EXPECT_FALSE(second->parcel);
  sockets.holder.reset();
  EXPECT_FALSE(sendMessage(sockets.program, 9));
  EXPECT_FALSE(receiveMessage(sockets.program));
}

}  // namespace
}  // namespace lumiwren
