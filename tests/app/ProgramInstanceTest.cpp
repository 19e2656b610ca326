#include "app/ProgramInstance.h"

#include "app/Eventually.h"
#include "app/SessionBus.h"

#include <gtest/gtest.h>

#include <QDBusConnectionInterface>

#include <memory>
#include <optional>
#include <vector>

namespace lumiwren {
namespace {

using testing::eventually;

class ProgramInstanceTest : public ::testing::Test {
protected:
  testing::SessionBus bus_;
  int activations_ = 0;
  std::optional<ProgramInstance> first_{std::in_place, bus_.connect(), [this] { ++activations_; }};
};

TEST_F(ProgramInstanceTest, TheFirstOneHasTheName) {
  EXPECT_TRUE(first_->isFirst());
  EXPECT_TRUE(bus_.connect().interface()->isServiceRegistered(QLatin1String(ProgramInstance::name)));
}

TEST_F(ProgramInstanceTest, OfManyOneIsTheFirst) {
  for (int count = 0; count < 10; ++count) {
    EXPECT_FALSE(ProgramInstance(bus_.connect(), [] {}).isFirst());
  }
}

TEST_F(ProgramInstanceTest, StartingAgainIsToldToTheFirst) {
  const auto call = QDBusMessage::createMethodCall(
      QLatin1String(ProgramInstance::name), QLatin1String(ProgramInstance::path),
      QStringLiteral("org.freedesktop.Application"), QStringLiteral("Activate"));
  const auto answer = testing::call(bus_.connect(), call, {QVariantMap()});
  EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage);
  EXPECT_TRUE(eventually([this] { return activations_ == 1; }));
}

TEST_F(ProgramInstanceTest, AFirstThatDoesNotAnswerIsWaitedForOnlySoLong) {
  // This thread, whose loop does not run meanwhile, is the first one's too.
  EXPECT_FALSE(ProgramInstance(bus_.connect(), [] {}).activateFirst());
}

TEST_F(ProgramInstanceTest, WithoutABusThereIsNoOther) {
  const auto none =
      QDBusConnection::connectToBus(QStringLiteral("unix:path=/nonexistent/bus"), QStringLiteral("no-bus"));
  const ProgramInstance one(none, [] {});
  const ProgramInstance other(none, [] {});
  EXPECT_TRUE(one.isFirst());
  EXPECT_TRUE(other.isFirst());
}

}  // namespace
}  // namespace lumiwren
