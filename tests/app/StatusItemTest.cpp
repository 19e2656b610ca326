#include "app/StatusItem.h"

#include "app/Eventually.h"
#include "app/SessionBus.h"
#include "app/WatcherFake.h"
#include "app/XEmbedTray.h"
#include "support/ApplicationEnvironment.h"
#include "support/XServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDBusArgument>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace lumiwren {
namespace {

using ::testing::Contains;
using testing::eventually;
using ::testing::Not;
using testing::Process;
using testing::SessionBus;
using ::testing::Test;
using testing::WatcherFake;
using testing::XEmbedTray;
using testing::XScreen;
using testing::XServer;

constexpr QRgb iconColour = qRgb(0x8c, 0x59, 0xd9);
constexpr uint32_t keyDown = 0xff54;
constexpr uint32_t keyReturn = 0xff0d;

[[maybe_unused]] const ::testing::Environment *const application =
    testing::ApplicationEnvironment<QGuiApplication>::add();

/// Runs the event loop until something is to be seen on the screen, of which there is no event.
bool seen(const std::function<bool()> &condition) {
  QTimer look;
  look.start(10);
  return eventually(condition);
}

/// A status item in a program of its own, on an X server without window manager.
class StatusItemTest : public Test {
protected:
  using Environment = std::vector<std::pair<std::string, std::string>>;

  Environment environment(const std::string &bus) const {
    Environment result = x_.environment();
    result.insert(result.end(), {{"QT_QPA_PLATFORM", "xcb"},
                                 {"DBUS_SESSION_BUS_ADDRESS", bus},
                                 {"XDG_RUNTIME_DIR", home_.path().toStdString()},
                                 {"XDG_CONFIG_HOME", home_.path().toStdString()},
                                 {"XDG_CACHE_HOME", home_.path().toStdString()}});
    return result;
  }

  void start(const std::string &bus, const Environment &more = {}) {
    Environment all = environment(bus);
    all.insert(all.end(), more.begin(), more.end());
    program_.emplace(Process::Options{.command = {STATUS_ITEM_PROGRAM}, .environment = all});
  }

  void startOnBus(const Environment &more = {}) { start(bus_.address(), more); }

  static constexpr char noBus[] = "unix:path=/nonexistent/bus";

  QDBusMessage call(const QString &item, const char *path, const char *interface, const char *method,
                    const QVariantList &arguments) {
    return testing::call(host_,
                         QDBusMessage::createMethodCall(item, QLatin1String(path), QLatin1String(interface),
                                                        QLatin1String(method)),
                         arguments);
  }

  QTemporaryDir home_;
  XServer x_;
  SessionBus bus_;
  QDBusConnection host_ = bus_.connect();
  std::optional<Process> program_;
};

TEST_F(StatusItemTest, WithAWatcherThereIsNoOtherIcon) {
  const WatcherFake watcher(host_);
  XEmbedTray tray(x_.display());
  startOnBus();
  ASSERT_TRUE(eventually([&] { return !watcher.items().isEmpty(); }));
  // Another program docks after whatever this one might have.
  Process other(Process::Options{.command = {STATUS_ITEM_PROGRAM}, .environment = environment(noBus)});
  ASSERT_TRUE(eventually([&] { return tray.hasIcon(); }));
  other.kill(SIGKILL);
  EXPECT_TRUE(eventually([&] { return !tray.hasIcon(); }));
}

TEST_F(StatusItemTest, WithoutABusTheIconIsInTheEmbeddingTray) {
  XEmbedTray tray(x_.display());
  start(noBus);
  EXPECT_TRUE(eventually([&] { return tray.hasIcon(); }));
  EXPECT_TRUE(seen([&] { return tray.showsColour(iconColour); }));
}

TEST_F(StatusItemTest, AnEmbeddingTrayMayComeAfterTheProgram) {
  startOnBus();
  QString item;
  {
    const WatcherFake watcher(host_);
    ASSERT_TRUE(eventually([&] { return !watcher.items().isEmpty(); }));
    item = watcher.items().constLast();
  }
  // With its answer the program has also seen the watcher go.
  call(item, "/StatusNotifierItem", "org.kde.StatusNotifierItem", "Scroll", {1, QStringLiteral("vertical")});
  XEmbedTray tray(x_.display());
  EXPECT_TRUE(eventually([&] { return tray.hasIcon(); }));
}

TEST_F(StatusItemTest, TheIconMovesToAWatcherThatComesAndBackWhenItGoes) {
  XEmbedTray tray(x_.display());
  startOnBus();
  ASSERT_TRUE(eventually([&] { return tray.hasIcon(); }));
  for (int round = 0; round < 3; ++round) {
    const auto watcher = std::make_unique<WatcherFake>(host_);
    EXPECT_TRUE(eventually([&] { return watcher->items().size() == 1; }));
    EXPECT_TRUE(eventually([&] { return !tray.hasIcon(); }));
  }
  EXPECT_TRUE(eventually([&] { return tray.hasIcon(); }));
}

TEST_F(StatusItemTest, TheIconMovesBackFromAWatcherThatWasThereFirst) {
  auto watcher = std::make_unique<WatcherFake>(host_);
  XEmbedTray tray(x_.display());
  startOnBus();
  ASSERT_TRUE(eventually([&] { return !watcher->items().isEmpty(); }));
  watcher.reset();
  EXPECT_TRUE(eventually([&] { return tray.hasIcon(); }));
}

TEST_F(StatusItemTest, TheIconMovesBackWhenTheBusEnds) {
  const WatcherFake watcher(host_);
  XEmbedTray tray(x_.display());
  startOnBus();
  ASSERT_TRUE(eventually([&] { return !watcher.items().isEmpty(); }));
  bus_.stop();
  EXPECT_TRUE(eventually([&] { return tray.hasIcon(); }));
}

TEST_F(StatusItemTest, QuitIsInTheMenuOfThePanel) {
  const WatcherFake watcher(host_);
  startOnBus();
  ASSERT_TRUE(eventually([&] { return !watcher.items().isEmpty(); }));
  const QDBusMessage reply =
      call(watcher.items().constLast(), "/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get",
           {QStringLiteral("org.kde.StatusNotifierItem"), QStringLiteral("Menu")});
  const QByteArray menu =
      reply.arguments().value(0).value<QDBusVariant>().variant().value<QDBusObjectPath>().path().toLatin1();
  call(watcher.items().constLast(), menu.constData(), "com.canonical.dbusmenu", "AboutToShow", {0});
  EXPECT_TRUE(program_->waitForLine("about to show the menu"));
  const QDBusMessage answer = call(watcher.items().constLast(), menu.constData(), "com.canonical.dbusmenu",
                                   "GetLayout", {0, -1, QStringList()});
  const auto layout = qdbus_cast<DBusMenuLayout>(answer.arguments().value(1));
  ASSERT_EQ(layout.children.size(), 1);
  const auto entry = qdbus_cast<DBusMenuLayout>(layout.children.constFirst());
  EXPECT_EQ(entry.properties.value(QStringLiteral("label")), QStringLiteral("Quit"));

  const QDBusMessage chosen =
      call(watcher.items().constLast(), menu.constData(), "com.canonical.dbusmenu", "Event",
           {entry.id, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(QStringLiteral(""))), 0U});
  EXPECT_EQ(chosen.type(), QDBusMessage::ReplyMessage);
  EXPECT_TRUE(program_->waitForLine("quit"));
  EXPECT_EQ(program_->wait(), 0);
}

TEST_F(StatusItemTest, AContextMenuIsShownAtItsPosition) {
  const WatcherFake watcher(host_);
  const XScreen screen(x_.display());
  startOnBus();
  ASSERT_TRUE(eventually([&] { return !watcher.items().isEmpty(); }));
  EXPECT_THAT(screen.windows(), Not(Contains(QPoint(300, 200))));
  call(watcher.items().constLast(), "/StatusNotifierItem", "org.kde.StatusNotifierItem", "ContextMenu",
       {300, 200});
  EXPECT_TRUE(program_->waitForLine("about to show the menu"));
  ASSERT_TRUE(seen([&] {
    const auto windows = screen.windows();
    return std::find(windows.begin(), windows.end(), QPoint(300, 200)) != windows.end();
  }));
  ASSERT_TRUE(seen([&] { return screen.keyboardIsGrabbed(); }));
  screen.press(keyDown);
  screen.press(keyReturn);
  EXPECT_TRUE(program_->waitForLine("quit"));
}

TEST_F(StatusItemTest, AnActivationIsAtItsPositionOnAScaledDesktop) {
  const WatcherFake watcher(host_);
  startOnBus({{"QT_SCALE_FACTOR", "2"}});
  ASSERT_TRUE(eventually([&] { return !watcher.items().isEmpty(); }));
  call(watcher.items().constLast(), "/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate",
       {300, 200});
  EXPECT_TRUE(program_->waitForLine("activated 150 100"));
}

TEST_F(StatusItemTest, AnActivationWithoutPositionIsAtThePointer) {
  const WatcherFake watcher(host_);
  const XScreen screen(x_.display());
  screen.click({321, 123}, 1);
  startOnBus();
  ASSERT_TRUE(eventually([&] { return !watcher.items().isEmpty(); }));
  call(watcher.items().constLast(), "/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate", {0, 0});
  EXPECT_TRUE(program_->waitForLine("activated 321 123"));
}

TEST_F(StatusItemTest, AClickOnTheEmbeddedIconActivates) {
  XEmbedTray tray(x_.display());
  start(noBus);
  ASSERT_TRUE(seen([&] { return tray.showsColour(iconColour); }));
  tray.screen().click(XEmbedTray::iconCentre, 1);
  EXPECT_TRUE(program_->waitForLine("activated 12 12"));
}

TEST_F(StatusItemTest, QuitIsInTheMenuOfTheEmbeddedIcon) {
  XEmbedTray tray(x_.display());
  start(noBus);
  ASSERT_TRUE(seen([&] { return tray.showsColour(iconColour); }));
  const std::size_t before = tray.screen().windows().size();
  tray.screen().click(XEmbedTray::iconCentre, 3);
  ASSERT_TRUE(
      seen([&] { return tray.screen().windows().size() > before && tray.screen().keyboardIsGrabbed(); }));
  tray.screen().press(keyDown);
  tray.screen().press(keyReturn);
  EXPECT_TRUE(program_->waitForLine("quit"));
}

/// The panel of a real desktop, which is a watcher and an embedding tray.
class StatusItemInPanelTest : public StatusItemTest {
protected:
  StatusItemInPanelTest() {
    const QString folder = home_.filePath(QStringLiteral("xfce4/xfconf/xfce-perchannel-xml"));
    QDir().mkpath(folder);
    QFile file(folder + QStringLiteral("/xfce4-panel.xml"));
    file.open(QIODevice::WriteOnly);
    file.write(R"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array"><value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=8;x=640;y=786"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="28"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty"><property name="plugin-1" type="string" value="systray"/></property>
</channel>
)");
  }

  void startPanel() {
    panel_.emplace(Process::Options{.command = {"xfce4-panel", "--disable-wm-check"},
                                    .environment = environment(panelBus_.address())});
  }

  SessionBus panelBus_{{QStringLiteral("org.xfce.Xfconf")}, environment({})};
  XScreen screen_{x_.display()};
  std::optional<Process> panel_;
};

TEST_F(StatusItemInPanelTest, ThePanelShowsTheIcon) {
  startPanel();
  start(panelBus_.address());
  EXPECT_TRUE(seen([&] { return screen_.pixels(iconColour) > 50; }));
}

TEST_F(StatusItemInPanelTest, APanelThatComesAfterTheProgramShowsTheIcon) {
  start(panelBus_.address());
  startPanel();
  EXPECT_TRUE(seen([&] { return screen_.pixels(iconColour) > 50; }));
}

TEST_F(StatusItemInPanelTest, ThePanelShowsTheIconOfAProgramWithoutABus) {
  startPanel();
  start(noBus);
  EXPECT_TRUE(seen([&] { return screen_.pixels(iconColour) > 50; }));
}

}  // namespace
}  // namespace lumiwren
