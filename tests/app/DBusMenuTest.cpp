#include "app/DBusMenu.h"

#include "app/Eventually.h"
#include "app/SessionBus.h"

#include <gtest/gtest.h>

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QProcess>

#include <limits>

namespace lumiwren {
namespace {

using ::testing::Test;

class LayoutUpdates : public QObject {
  Q_OBJECT

public:
  QList<uint> revisions;

public Q_SLOTS:
  void updated(uint revision, int parent) {
    EXPECT_EQ(parent, 0);
    revisions.append(revision);
  }
};

QVariantMap quit() {
  return {{QStringLiteral("label"), QStringLiteral("Quit")}, {QStringLiteral("enabled"), true}};
}

class DBusMenuTest : public Test {
protected:
  DBusMenuTest() {
    menu_.setEntries(
        {{.id = 7, .label = QStringLiteral("on"), .action = [this] { chosen_ += u'7'; }, .checked = true},
         {.id = 3,
          .label = QStringLiteral("off_line"),
          .action = [this] { chosen_ += u'3'; },
          .checked = false},
         {.id = 4,
          .label = QStringLiteral("disabled"),
          .action = [this] { chosen_ += u'4'; },
          .enabled = false},
         {.id = 5, .label = {}, .action = {}, .separator = true},
         {.id = 1, .label = QStringLiteral("Quit"), .action = [this] { chosen_ += u'1'; }}});
  }

  QDBusMessage menu(const char *method, const QVariantList &arguments) {
    return testing::call(
        panel_,
        QDBusMessage::createMethodCall(item_.baseService(), QStringLiteral("/MenuBar"),
                                       QStringLiteral("com.canonical.dbusmenu"), QLatin1String(method)),
        arguments);
  }

  DBusMenuLayout layout(int parent, int depth, const QStringList &names = {}) {
    const QDBusMessage reply = menu("GetLayout", {parent, depth, names});
    EXPECT_EQ(reply.signature(), QStringLiteral("u(ia{sv}av)")) << qPrintable(reply.errorMessage());
    return qdbus_cast<DBusMenuLayout>(reply.arguments().value(1));
  }

  static DBusMenuLayout child(const DBusMenuLayout &layout, qsizetype index) {
    return qdbus_cast<DBusMenuLayout>(layout.children.at(index));
  }

  static QVariant variant(const QVariant &value = {}) {
    return QVariant::fromValue(QDBusVariant(value.isValid() ? value : QVariant(QString())));
  }

  testing::SessionBus bus_;
  QDBusConnection item_ = bus_.connect();
  QDBusConnection panel_ = bus_.connect();
  QString chosen_;
  std::function<void()> aboutToShow_ = [] {};
  DBusMenu menu_{item_, QStringLiteral("/MenuBar"), [this] { aboutToShow_(); }};
};

TEST_F(DBusMenuTest, TheLayoutHasAllEntriesInOrder) {
  const DBusMenuLayout root = layout(0, -1);
  EXPECT_EQ(root.id, 0);
  EXPECT_EQ(root.properties.value(QStringLiteral("children-display")), QStringLiteral("submenu"));
  ASSERT_EQ(root.children.size(), 5);
  EXPECT_EQ(child(root, 0).id, 7);
  EXPECT_EQ(child(root, 4).id, 1);
  EXPECT_EQ(child(root, 4).properties, quit());
  EXPECT_TRUE(child(root, 4).children.isEmpty());
}

TEST_F(DBusMenuTest, CheckMarksSeparatorsAndDisabledEntriesAreProperties) {
  const DBusMenuLayout root = layout(0, 1);
  EXPECT_EQ(child(root, 0).properties.value(QStringLiteral("toggle-type")), QStringLiteral("checkmark"));
  EXPECT_EQ(child(root, 0).properties.value(QStringLiteral("toggle-state")), 1);
  EXPECT_EQ(child(root, 1).properties.value(QStringLiteral("toggle-state")), 0);
  EXPECT_EQ(child(root, 2).properties.value(QStringLiteral("enabled")), false);
  EXPECT_FALSE(child(root, 2).properties.contains(QStringLiteral("toggle-type")));
  EXPECT_EQ(child(root, 3).properties, (QVariantMap{{QStringLiteral("type"), QStringLiteral("separator")}}));
}

TEST_F(DBusMenuTest, AnUnderscoreIsShownAndMarksNoAccessKey) {
  EXPECT_EQ(layout(3, 0).properties.value(QStringLiteral("label")), QStringLiteral("off__line"));
}

TEST_F(DBusMenuTest, ALayoutOfDepthZeroHasNoChildren) {
  EXPECT_TRUE(layout(0, 0).children.isEmpty());
}

TEST_F(DBusMenuTest, TheLayoutOfAnEntryIsTheEntry) {
  const DBusMenuLayout entry = layout(1, -1);
  EXPECT_EQ(entry.id, 1);
  EXPECT_EQ(entry.properties, quit());
  EXPECT_TRUE(entry.children.isEmpty());
}

TEST_F(DBusMenuTest, OnlyTheNamedPropertiesAreInTheLayout) {
  const DBusMenuLayout root = layout(0, -1, {QStringLiteral("label"), QStringLiteral("icon-data")});
  EXPECT_TRUE(root.properties.isEmpty());
  EXPECT_EQ(child(root, 4).properties, (QVariantMap{{QStringLiteral("label"), QStringLiteral("Quit")}}));
}

TEST_F(DBusMenuTest, GroupPropertiesSkipUnknownEntries) {
  const auto items = qdbus_cast<QList<DBusMenuItem>>(
      menu("GetGroupProperties", {QVariant::fromValue(QList<int>{1, 99, -1}), QStringList()})
          .arguments()
          .value(0));
  ASSERT_EQ(items.size(), 1);
  EXPECT_EQ(items[0].id, 1);
  EXPECT_EQ(items[0].properties, quit());
}

TEST_F(DBusMenuTest, GroupPropertiesOfNoEntryAreThoseOfAll) {
  const auto items = qdbus_cast<QList<DBusMenuItem>>(
      menu("GetGroupProperties", {QVariant::fromValue(QList<int>{}), QStringList()}).arguments().value(0));
  EXPECT_EQ(items.size(), 6);
}

TEST_F(DBusMenuTest, GivesOneProperty) {
  EXPECT_EQ(
      menu("GetProperty", {1, QStringLiteral("label")}).arguments().value(0).value<QDBusVariant>().variant(),
      QStringLiteral("Quit"));
}

TEST_F(DBusMenuTest, AClickRunsTheActionOnce) {
  EXPECT_EQ(menu("Event", {1, QStringLiteral("clicked"), variant(), 0U}).type(), QDBusMessage::ReplyMessage);
  EXPECT_TRUE(testing::eventually([&] { return !chosen_.isEmpty(); }));
  menu("AboutToShow", {0});
  EXPECT_EQ(chosen_, QStringLiteral("1"));
}

TEST_F(DBusMenuTest, APanelHasItsAnswerBeforeTheActionRuns) {
  // A process of its own: its answer must not depend on this one's loop.
  QProcess panel;
  bool answeredFirst = false;
  menu_.setEntries({{.id = 1, .label = {}, .action = [&] {
                       // An action that shows a dialogue runs a loop of its own.
                       answeredFirst =
                           testing::eventually([&] { return panel.state() == QProcess::NotRunning; });
                     }}});
  panel.start(
      QStringLiteral("dbus-send"),
      {QStringLiteral("--bus=") + QString::fromStdString(bus_.address()), QStringLiteral("--print-reply"),
       QStringLiteral("--dest=") + item_.baseService(), QStringLiteral("/MenuBar"),
       QStringLiteral("com.canonical.dbusmenu.Event"), QStringLiteral("int32:1"),
       QStringLiteral("string:clicked"), QStringLiteral("variant:string:"), QStringLiteral("uint32:0")});
  EXPECT_TRUE(testing::eventually([&] { return answeredFirst; }));
  EXPECT_EQ(panel.exitCode(), 0) << qPrintable(QString::fromUtf8(panel.readAllStandardError()));
}

TEST_F(DBusMenuTest, OtherEventsAndEntriesWithoutActionDoNothing) {
  for (const char *type : {"hovered", "opened", "closed", "", "CLICKED"}) {
    menu("Event", {1, QLatin1String(type), variant(QByteArray(100, 'x')), 0U});
  }
  for (const int id : {0, 4, 5}) {
    EXPECT_EQ(menu("Event", {id, QStringLiteral("clicked"), variant(), 0U}).type(),
              QDBusMessage::ReplyMessage);
  }
  // The action of a later click shows that the earlier ones had their turn.
  menu("Event", {7, QStringLiteral("clicked"), variant(), 0U});
  EXPECT_TRUE(testing::eventually([&] { return !chosen_.isEmpty(); }));
  EXPECT_EQ(chosen_, QStringLiteral("7"));
}

TEST_F(DBusMenuTest, AGroupOfEventsRunsTheKnownOnesAndNamesTheOthers) {
  const QList<DBusMenuEvent> events{{1, QStringLiteral("clicked"), QDBusVariant(0), 0},
                                    {42, QStringLiteral("clicked"), QDBusVariant(0), 0},
                                    {3, QStringLiteral("clicked"), QDBusVariant(0), 0}};
  const QDBusMessage reply = menu("EventGroup", {QVariant::fromValue(events)});
  EXPECT_EQ(qdbus_cast<QList<int>>(reply.arguments().value(0)), QList<int>{42});
  EXPECT_TRUE(testing::eventually([&] { return chosen_ == u"13"; }));
}

TEST_F(DBusMenuTest, NothingNeedsAnUpdateBeforeItIsShown) {
  EXPECT_EQ(menu("AboutToShow", {0}).arguments().value(0), false);
  const QDBusMessage reply = menu("AboutToShowGroup", {QVariant::fromValue(QList<int>{0, 1, 8})});
  EXPECT_TRUE(qdbus_cast<QList<int>>(reply.arguments().value(0)).isEmpty());
  EXPECT_EQ(qdbus_cast<QList<int>>(reply.arguments().value(1)), QList<int>{8});
}

TEST_F(DBusMenuTest, EntriesThatChangeForAShowingAreAnUpdateOfIt) {
  bool isEnabled = false;
  aboutToShow_ = [&] {
    menu_.setEntries({{.id = 1, .label = QStringLiteral("Check"), .action = [] {}, .enabled = isEnabled}});
  };
  EXPECT_EQ(menu("AboutToShow", {0}).arguments().value(0), true);
  EXPECT_EQ(layout(1, 0).properties.value(QStringLiteral("enabled")), false);
  EXPECT_EQ(menu("AboutToShow", {0}).arguments().value(0), false);
  isEnabled = true;
  EXPECT_EQ(menu("AboutToShow", {1}).arguments().value(0), false);  // that entry has nothing to show
  const QDBusMessage reply = menu("AboutToShowGroup", {QVariant::fromValue(QList<int>{0, 1})});
  EXPECT_EQ(qdbus_cast<QList<int>>(reply.arguments().value(0)), QList<int>{0});
  EXPECT_EQ(layout(1, 0).properties.value(QStringLiteral("enabled")), true);
}

TEST_F(DBusMenuTest, EntriesThatLookTheSameAreNotAnnounced) {
  const auto revision = [&] {
    return menu("GetLayout", {0, 0, QStringList()}).arguments().value(0).toUInt();
  };
  const std::vector<MenuEntry> same{{.id = 1, .label = QStringLiteral("Quit"), .action = [] {}}};
  menu_.setEntries(same);
  const uint before = revision();
  menu_.setEntries(same);
  EXPECT_EQ(revision(), before);
  menu_.setEntries({});
  EXPECT_GT(revision(), before);
}

TEST_F(DBusMenuTest, UnknownEntriesAndPropertiesAreErrors) {
  for (const int id : {-1, 2, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    for (const QDBusMessage &reply :
         {menu("GetLayout", {id, -1, QStringList()}), menu("GetProperty", {id, QStringLiteral("label")}),
          menu("Event", {id, QStringLiteral("clicked"), variant(), 0U}), menu("AboutToShow", {id})}) {
      EXPECT_EQ(reply.errorName(), QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"));
    }
  }
  EXPECT_EQ(menu("GetProperty", {1, QStringLiteral("nothing")}).errorName(),
            QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"));
}

TEST_F(DBusMenuTest, ArgumentsOfOtherTypesAreRefused) {
  EXPECT_EQ(menu("GetLayout", {QStringLiteral("0")}).type(), QDBusMessage::ErrorMessage);
  EXPECT_EQ(menu("Event", {1}).type(), QDBusMessage::ErrorMessage);
  EXPECT_EQ(menu("EventGroup", {QStringList{QStringLiteral("clicked")}}).type(), QDBusMessage::ErrorMessage);
  EXPECT_EQ(menu("GetGroupProperties", {QStringList(), QStringList()}).type(), QDBusMessage::ErrorMessage);
  EXPECT_EQ(layout(0, -1).children.size(), 5);
}

TEST_F(DBusMenuTest, NewEntriesAreAnnouncedWithTheirRevision) {
  LayoutUpdates updates;
  const uint before = menu("GetLayout", {0, 0, QStringList()}).arguments().value(0).toUInt();
  panel_.connect(item_.baseService(), QStringLiteral("/MenuBar"), QStringLiteral("com.canonical.dbusmenu"),
                 QStringLiteral("LayoutUpdated"), &updates, SLOT(updated(uint, int)));
  menu("AboutToShow", {0});  // the bus knows of the interest now

  menu_.setEntries({{.id = 2, .label = QStringLiteral("New"), .action = [] {}}});

  ASSERT_TRUE(testing::eventually([&] { return !updates.revisions.isEmpty(); }));
  EXPECT_GT(updates.revisions.constFirst(), before);
  EXPECT_EQ(menu("GetLayout", {0, 0, QStringList()}).arguments().value(0).toUInt(),
            updates.revisions.constFirst());
  EXPECT_EQ(layout(0, -1).children.size(), 1);
  EXPECT_EQ(layout(2, -1).properties.value(QStringLiteral("label")), QStringLiteral("New"));
}

TEST_F(DBusMenuTest, ItsOwnPropertiesAreReadable) {
  const QDBusMessage reply =
      testing::call(panel_,
                    QDBusMessage::createMethodCall(item_.baseService(), QStringLiteral("/MenuBar"),
                                                   QStringLiteral("org.freedesktop.DBus.Properties"),
                                                   QStringLiteral("GetAll")),
                    {QStringLiteral("com.canonical.dbusmenu")});
  const auto properties = qdbus_cast<QVariantMap>(reply.arguments().value(0));
  EXPECT_EQ(properties.value(QStringLiteral("Version")), 3U);
  EXPECT_EQ(properties.value(QStringLiteral("TextDirection")), QStringLiteral("ltr"));
  EXPECT_EQ(properties.value(QStringLiteral("Status")), QStringLiteral("normal"));
  EXPECT_TRUE(properties.contains(QStringLiteral("IconThemePath")));
}

}  // namespace
}  // namespace lumiwren

#include "DBusMenuTest.moc"
