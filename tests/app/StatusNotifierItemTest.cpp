#include "app/StatusNotifierItem.h"

#include "app/Eventually.h"
#include "app/SessionBus.h"
#include "app/WatcherFake.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDBusArgument>

#include <optional>
#include <vector>

namespace lumiwren {
namespace {

using ::testing::ElementsAre;
using testing::eventually;
using ::testing::Test;
using testing::WatcherFake;

class StatusNotifierItemTest : public Test {
protected:
  void makeItem() {
    item_.emplace(bus_, QStringLiteral("/MenuBar"),
                  StatusNotifierItem::Handlers{
                      .activate = [this](QPoint position) { activated_ = position; },
                      .showMenu = [this](QPoint position) { menuShown_ = position; },
                      .registered = [this](bool registered) { registered_.push_back(registered); }});
  }

  bool told(std::size_t times) {
    return eventually([&] { return registered_.size() >= times; });
  }

  QDBusMessage ask(const QDBusConnection &host, const char *interface, const char *method,
                   const QVariantList &arguments) {
    return testing::call(
        host,
        QDBusMessage::createMethodCall(bus_.baseService(), QStringLiteral("/StatusNotifierItem"),
                                       QLatin1String(interface), QLatin1String(method)),
        arguments);
  }

  QVariantMap properties(const QDBusConnection &host) {
    return qdbus_cast<QVariantMap>(
        ask(host, "org.freedesktop.DBus.Properties", "GetAll", {QStringLiteral("org.kde.StatusNotifierItem")})
            .arguments()
            .value(0));
  }

  QDBusMessage item(const char *method, const QVariantList &arguments) {
    return ask(host_, "org.kde.StatusNotifierItem", method, arguments);
  }

  testing::SessionBus daemon_;
  QDBusConnection bus_ = daemon_.connect();
  QDBusConnection host_ = daemon_.connect();
  std::vector<bool> registered_;
  std::optional<QPoint> activated_;
  std::optional<QPoint> menuShown_;
  std::optional<StatusNotifierItem> item_;
};

TEST_F(StatusNotifierItemTest, RegistersAtAWatcherThatIsThere) {
  const WatcherFake watcher(host_);
  makeItem();
  ASSERT_TRUE(told(1));
  EXPECT_THAT(registered_, ElementsAre(true));
  EXPECT_EQ(watcher.items(), QStringList{bus_.baseService()});
}

TEST_F(StatusNotifierItemTest, RegistersAtAWatcherThatComesLater) {
  makeItem();
  ASSERT_TRUE(told(1));
  EXPECT_THAT(registered_, ElementsAre(false));
  const WatcherFake watcher(host_);
  ASSERT_TRUE(told(2));
  EXPECT_THAT(registered_, ElementsAre(false, true));
  EXPECT_EQ(watcher.items().size(), 1);
}

TEST_F(StatusNotifierItemTest, RegistersAtAWatcherThatReplacesAnother) {
  const WatcherFake watcher(host_);
  makeItem();
  ASSERT_TRUE(told(1));
  const WatcherFake other(daemon_.connect());
  ASSERT_TRUE(told(2));
  EXPECT_THAT(registered_, ElementsAre(true, true));
  EXPECT_EQ(watcher.items().size(), 1);
  EXPECT_EQ(other.items(), QStringList{bus_.baseService()});
}

TEST_F(StatusNotifierItemTest, RegistersAgainAtAWatcherThatWentAndCameBack) {
  std::optional<WatcherFake> watcher(std::in_place, host_);
  makeItem();
  ASSERT_TRUE(told(1));
  watcher.reset();
  ASSERT_TRUE(told(2));
  watcher.emplace(host_);
  ASSERT_TRUE(told(3));
  EXPECT_THAT(registered_, ElementsAre(true, false, true));
  EXPECT_EQ(watcher->items().size(), 1);
}

TEST_F(StatusNotifierItemTest, AWatcherThatRefusesIsNone) {
  const WatcherFake watcher(host_, WatcherFake::Answer::Refuse);
  makeItem();
  ASSERT_TRUE(told(1));
  EXPECT_THAT(registered_, ElementsAre(false));
}

TEST_F(StatusNotifierItemTest, AWatcherThatNeverAnsweredIsForgottenWhenAnotherComes) {
  const WatcherFake silent(host_, WatcherFake::Answer::None);
  makeItem();
  ASSERT_TRUE(eventually([&] { return silent.items().size() == 1; }));
  EXPECT_TRUE(registered_.empty());
  // The silent one leaves the bus, which ends its call with an error; it was replaced before.
  const WatcherFake other(daemon_.connect());
  QDBusConnection::disconnectFromBus(host_.name());
  host_ = daemon_.connect();
  ASSERT_TRUE(told(1));
  EXPECT_EQ(item("Scroll", {1, QStringLiteral("vertical")}).type(), QDBusMessage::ReplyMessage);
  EXPECT_THAT(registered_, ElementsAre(true));
}

TEST_F(StatusNotifierItemTest, WithoutABusThereIsNoWatcher) {
  bus_ = QDBusConnection(QStringLiteral("no such connection"));
  makeItem();
  ASSERT_TRUE(told(1));
  EXPECT_THAT(registered_, ElementsAre(false));
}

TEST_F(StatusNotifierItemTest, NoWatcherIsLeftWhenTheBusEnds) {
  const WatcherFake watcher(host_);
  makeItem();
  ASSERT_TRUE(told(1));
  daemon_.stop();
  ASSERT_TRUE(told(2));
  EXPECT_FALSE(registered_.back());
}

TEST_F(StatusNotifierItemTest, ItsPropertiesAreReadable) {
  makeItem();
  const QVariantMap map = properties(host_);
  EXPECT_EQ(map.value(QStringLiteral("Category")), QStringLiteral("ApplicationStatus"));
  EXPECT_EQ(map.value(QStringLiteral("Id")), QStringLiteral("lumiwren"));
  EXPECT_EQ(map.value(QStringLiteral("Title")), QStringLiteral("Lumiwren"));
  EXPECT_EQ(map.value(QStringLiteral("Status")), QStringLiteral("Active"));
  EXPECT_EQ(map.value(QStringLiteral("WindowId")), 0);
  EXPECT_EQ(map.value(QStringLiteral("ItemIsMenu")), false);
  EXPECT_EQ(map.value(QStringLiteral("Menu")).value<QDBusObjectPath>().path(), QStringLiteral("/MenuBar"));
  const auto toolTip = map.value(QStringLiteral("ToolTip")).value<QDBusArgument>();
  EXPECT_EQ(toolTip.currentSignature(), QStringLiteral("(sa(iiay)ss)"));
  EXPECT_EQ(qdbus_cast<IconToolTip>(toolTip).title, QStringLiteral("Lumiwren"));
}

TEST_F(StatusNotifierItemTest, TheIconIsThereInSeveralSizesAsAlphaRedGreenBlue) {
  makeItem();
  const auto argument = properties(host_).value(QStringLiteral("IconPixmap")).value<QDBusArgument>();
  EXPECT_EQ(argument.currentSignature(), QStringLiteral("a(iiay)"));
  const auto pixmaps = qdbus_cast<IconPixmaps>(argument);
  std::vector<int> sizes;
  for (const IconPixmap &pixmap : pixmaps) {
    sizes.push_back(pixmap.width);
    EXPECT_EQ(pixmap.height, pixmap.width);
    const qsizetype width = pixmap.width;
    ASSERT_EQ(pixmap.argb.size(), width * width * 4);
    EXPECT_EQ(pixmap.argb.first(4), QByteArray(4, '\0')) << "a corner of the drawing is empty";
    // The middle of the bird's body.
    EXPECT_EQ(pixmap.argb.mid((width / 2 * width + width / 2) * 4, 4), QByteArray("\xff\x8c\x59\xd9"));
  }
  EXPECT_THAT(sizes, ElementsAre(16, 22, 24, 32, 48, 64));
}

TEST_F(StatusNotifierItemTest, AnyNumberOfHostsMayAsk) {
  makeItem();
  const QDBusConnection other = daemon_.connect();
  const auto first = qdbus_cast<IconPixmaps>(properties(host_).value(QStringLiteral("IconPixmap")));
  const auto second = qdbus_cast<IconPixmaps>(properties(other).value(QStringLiteral("IconPixmap")));
  ASSERT_EQ(first.size(), second.size());
  EXPECT_EQ(first.constLast().argb, second.constLast().argb);
}

TEST_F(StatusNotifierItemTest, ActivationsCarryTheirPosition) {
  makeItem();
  item("Activate", {10, -20});
  EXPECT_TRUE(eventually([&] { return activated_ == QPoint(10, -20); }));
  item("SecondaryActivate", {30, 40});
  EXPECT_TRUE(eventually([&] { return activated_ == QPoint(30, 40); }));
  EXPECT_EQ(menuShown_, std::nullopt);
  item("ContextMenu", {50, 60});
  EXPECT_TRUE(eventually([&] { return menuShown_ == QPoint(50, 60); }));
  EXPECT_EQ(activated_, QPoint(30, 40));
}

TEST_F(StatusNotifierItemTest, ScrollingDoesNothing) {
  makeItem();
  EXPECT_EQ(item("Scroll", {-120, QStringLiteral("horizontal")}).type(), QDBusMessage::ReplyMessage);
  EXPECT_EQ(activated_, std::nullopt);
}

TEST_F(StatusNotifierItemTest, WhatIsNotInTheInterfaceIsRefused) {
  makeItem();
  EXPECT_EQ(item("Activate", {QStringLiteral("here")}).type(), QDBusMessage::ErrorMessage);
  EXPECT_EQ(item("Activate", {}).type(), QDBusMessage::ErrorMessage);
  EXPECT_EQ(item("deleteLater", {}).type(), QDBusMessage::ErrorMessage);
  EXPECT_EQ(item("loseWatcher", {}).type(), QDBusMessage::ErrorMessage);
  EXPECT_EQ(ask(host_, "org.freedesktop.DBus.Properties", "Set",
                {QStringLiteral("org.kde.StatusNotifierItem"), QStringLiteral("Title"),
                 QVariant::fromValue(QDBusVariant(QStringLiteral("other")))})
                .type(),
            QDBusMessage::ErrorMessage);
  EXPECT_EQ(activated_, std::nullopt);
}

}  // namespace
}  // namespace lumiwren
