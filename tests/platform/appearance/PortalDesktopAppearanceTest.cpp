#include "platform/linux/appearance/PortalDesktopAppearance.h"

#include "app/Eventually.h"
#include "app/SessionBus.h"
#include "platform/appearance/PrintAppearance.h"
#include "support/ApplicationEnvironment.h"
#include "support/Process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusVariant>

#include <optional>
#include <string>
#include <vector>

namespace lumiwren {
namespace {

using testing::call;
using ::testing::ElementsAre;
using testing::eventually;
using ::testing::IsEmpty;
using testing::Process;
using testing::SessionBus;
using ::testing::Test;

constexpr char portalName[] = "org.freedesktop.portal.Desktop";
constexpr char portalPath[] = "/org/freedesktop/portal/desktop";
constexpr char dark[] = "{'org.freedesktop.appearance': {'color-scheme': <uint32 1>}}";
constexpr char light[] = "{'org.freedesktop.appearance': {'color-scheme': <uint32 2>}}";

Appearance withScheme(ColorScheme scheme) {
  return {.colorScheme = scheme};
}

[[maybe_unused]] const ::testing::Environment *const application =
    testing::ApplicationEnvironment<QCoreApplication>::add();

/// A real bus, and a portal on it that is a process of its own.
class PortalDesktopAppearanceTest : public Test {
protected:
  void startPortal(const std::string &behaviour, const std::string &settings = "{}") {
    portal_.emplace(
        Process::Options{.command = {"/usr/bin/python3", "-B", SETTINGS_PORTAL, behaviour, settings},
                         .environment = {{"DBUS_SESSION_BUS_ADDRESS", bus_.address()}}});
    ASSERT_TRUE(portal_->waitForLine("ready"));
  }

  void endPortal() {
    portal_->kill(SIGKILL);
    ASSERT_TRUE(portal_->wait());
    portal_.reset();
  }

  void set(const char *nameSpace, const char *key, const QVariant &value) {
    const auto message =
        QDBusMessage::createMethodCall(QLatin1String(portalName), QLatin1String(portalPath),
                                       QStringLiteral("lumiwren.test.Portal"), QStringLiteral("Set"));
    const auto answer =
        call(user_, message,
             {QLatin1String(nameSpace), QLatin1String(key), QVariant::fromValue(QDBusVariant(value))});
    ASSERT_EQ(answer.type(), QDBusMessage::ReplyMessage) << answer.errorMessage().toStdString();
  }

  void setScheme(unsigned scheme) { set("org.freedesktop.appearance", "color-scheme", scheme); }

  PortalDesktopAppearance &start() {
    appearance_.emplace(bus_.connect());
    observation_ =
        appearance_->observe([this](const Appearance &appearance) { changes_.push_back(appearance); });
    return *appearance_;
  }

  /// Everything that has been sent to the appearance so far has arrived there when this returns: a change
  /// that follows it has.
  void settle() {
    const auto before = changes_.size();
    set("org.gnome.desktop.interface", "text-scaling-factor",
        appearance_->current().textScale == 2.0 ? 1.5 : 2.0);
    ASSERT_TRUE(eventually([&] { return changes_.size() > before; }));
    changes_.pop_back();
  }

  SessionBus bus_;
  QDBusConnection user_ = bus_.connect();
  std::optional<Process> portal_;
  std::vector<Appearance> changes_;
  std::optional<PortalDesktopAppearance> appearance_;
  Handle observation_;
};

TEST_F(PortalDesktopAppearanceTest, TheAnswerComesAsAChange) {
  startPortal("plain",
              "{'org.freedesktop.appearance': {'color-scheme': <uint32 1>}, 'org.gnome.desktop.interface': "
              "{'enable-animations': <false>, 'text-scaling-factor': <1.25>, 'cursor-size': <24>}}");
  auto &appearance = start();
  EXPECT_EQ(appearance.current(), Appearance{});
  ASSERT_TRUE(eventually([&] { return !changes_.empty(); }));
  const Appearance expected{.colorScheme = ColorScheme::Dark, .reducesMotion = true, .textScale = 1.25};
  EXPECT_THAT(changes_, ElementsAre(expected));
  EXPECT_EQ(appearance.current(), expected);
}

TEST_F(PortalDesktopAppearanceTest, TakesValuesThatOlderPortalsWrapTwice) {
  startPortal("nested",
              "{'org.freedesktop.appearance': {'color-scheme': <uint32 2>}, 'org.kde.kdeglobals.KDE': "
              "{'AnimationDurationFactor': <'0'>}}");
  start();
  ASSERT_TRUE(eventually([&] { return !changes_.empty(); }));
  EXPECT_THAT(changes_, ElementsAre(Appearance{.colorScheme = ColorScheme::Light, .reducesMotion = true}));
}

TEST_F(PortalDesktopAppearanceTest, FollowsEachChange) {
  startPortal("plain", dark);
  start();
  ASSERT_TRUE(eventually([&] { return !changes_.empty(); }));
  setScheme(2);
  set("org.freedesktop.appearance", "color-scheme", QVariant::fromValue(QDBusVariant(1U)));
  setScheme(0);
  set("org.gnome.desktop.interface", "enable-animations", false);
  ASSERT_TRUE(eventually([&] { return changes_.size() == 5; }));
  EXPECT_THAT(changes_,
              ElementsAre(withScheme(ColorScheme::Dark), withScheme(ColorScheme::Light),
                          withScheme(ColorScheme::Dark), Appearance{}, Appearance{.reducesMotion = true}));
}

TEST_F(PortalDesktopAppearanceTest, WhatChangesNothingIsNotTold) {
  startPortal("plain", dark);
  start();
  ASSERT_TRUE(eventually([&] { return !changes_.empty(); }));
  setScheme(1);
  set("org.gnome.desktop.interface", "cursor-size", 48);
  set("org.gnome.desktop.interface", "text-scaling-factor", QStringLiteral("huge"));
  settle();
  EXPECT_THAT(changes_, ElementsAre(withScheme(ColorScheme::Dark)));
}

TEST_F(PortalDesktopAppearanceTest, NobodyIsToldAfterTheObservation) {
  startPortal("plain", dark);
  auto &appearance = start();
  ASSERT_TRUE(eventually([&] { return !changes_.empty(); }));
  observation_.reset();
  setScheme(2);
  EXPECT_TRUE(eventually([&] { return appearance.current().colorScheme == ColorScheme::Light; }));
  EXPECT_EQ(changes_.size(), 1U);
}

TEST_F(PortalDesktopAppearanceTest, APortalMayComeLater) {
  start();
  startPortal("plain", dark);
  ASSERT_TRUE(eventually([&] { return !changes_.empty(); }));
  EXPECT_THAT(changes_, ElementsAre(withScheme(ColorScheme::Dark)));
}

TEST_F(PortalDesktopAppearanceTest, WhatAPortalSaidHoldsUntilTheNextOneSaysOtherwise) {
  startPortal("plain", dark);
  auto &appearance = start();
  ASSERT_TRUE(eventually([&] { return !changes_.empty(); }));
  endPortal();
  EXPECT_EQ(appearance.current(), withScheme(ColorScheme::Dark));
  startPortal("plain", light);
  ASSERT_TRUE(eventually([&] { return changes_.size() == 2; }));
  EXPECT_THAT(changes_, ElementsAre(withScheme(ColorScheme::Dark), withScheme(ColorScheme::Light)));
  setScheme(0);
  EXPECT_TRUE(eventually([&] { return appearance.current() == Appearance{}; }));
}

TEST_F(PortalDesktopAppearanceTest, APortalThatNeverAnswersHoldsUpNothing) {
  startPortal("silent", dark);
  auto &appearance = start();
  setScheme(1);
  EXPECT_EQ(appearance.current(), Appearance{});
  endPortal();
  startPortal("plain", light);
  ASSERT_TRUE(eventually([&] { return !changes_.empty(); }));
  EXPECT_THAT(changes_, ElementsAre(withScheme(ColorScheme::Light)));
}

TEST_F(PortalDesktopAppearanceTest, APortalThatIsStillAskedAtTheEndDoesNoHarm) {
  startPortal("silent", dark);
  start();
  observation_.reset();
  appearance_.reset();
  endPortal();
  QCoreApplication::processEvents();
  EXPECT_THAT(changes_, IsEmpty());
}

class PortalDesktopAppearanceFailureTest : public PortalDesktopAppearanceTest,
                                           public ::testing::WithParamInterface<const char *> {};

TEST_P(PortalDesktopAppearanceFailureTest, IsNoPreferenceAndTheNextPortalIsHeard) {
  startPortal(GetParam(), dark);
  auto &appearance = start();
  // The portal answers one call after the other.
  setScheme(1);
  EXPECT_EQ(appearance.current(), Appearance{});
  endPortal();
  startPortal("plain", light);
  ASSERT_TRUE(eventually([&] { return !changes_.empty(); }));
  EXPECT_THAT(changes_, ElementsAre(withScheme(ColorScheme::Light)));
}

INSTANTIATE_TEST_SUITE_P(Answers, PortalDesktopAppearanceFailureTest, ::testing::Values("refusing", "wrong"));

TEST_F(PortalDesktopAppearanceTest, ChangesThatOthersTellOfAreNotTaken) {
  startPortal("plain", dark);
  start();
  ASSERT_TRUE(eventually([&] { return !changes_.empty(); }));
  auto signal =
      QDBusMessage::createSignal(QLatin1String(portalPath), QStringLiteral("org.freedesktop.portal.Settings"),
                                 QStringLiteral("SettingChanged"));
  signal << QStringLiteral("org.freedesktop.appearance") << QStringLiteral("color-scheme")
         << QVariant::fromValue(QDBusVariant(2U));
  ASSERT_TRUE(user_.send(signal));
  settle();
  EXPECT_THAT(changes_, ElementsAre(withScheme(ColorScheme::Dark)));
}

TEST_F(PortalDesktopAppearanceTest, WithoutABusNothingIsPreferred) {
  PortalDesktopAppearance appearance(
      QDBusConnection::connectToBus(QStringLiteral("unix:path=/nonexistent/bus"), QStringLiteral("no-bus")));
  const Handle observation =
      appearance.observe([this](const Appearance &changed) { changes_.push_back(changed); });
  QCoreApplication::processEvents();
  EXPECT_EQ(appearance.current(), Appearance{});
  EXPECT_THAT(changes_, IsEmpty());
}

TEST_F(PortalDesktopAppearanceTest, TheEndOfTheBusDoesNoHarm) {
  startPortal("plain", dark);
  auto &appearance = start();
  ASSERT_TRUE(eventually([&] { return !changes_.empty(); }));
  auto watched = bus_.connect();
  bus_.stop();
  ASSERT_TRUE(eventually([&] { return !watched.isConnected(); }));
  EXPECT_EQ(appearance.current(), withScheme(ColorScheme::Dark));
}

}  // namespace
}  // namespace lumiwren
