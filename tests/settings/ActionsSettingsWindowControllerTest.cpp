#include "settings/ActionsTesting.h"

#include "ui/Fonts.h"
#include "ui/PushButton.h"

#include <QCloseEvent>
#include <QImage>
#include <QScreen>

#include <optional>

namespace lumiwren {
namespace {

using ::testing::ElementsAre;
using testing::press;

class ActionsSettingsWindowControllerTest : public testing::ActionsWindowTest {
protected:
  /// Where the window is on a desktop of the screen's size, y up.
  Rect frame() {
    const QRect window = panel().geometry();
    return {{static_cast<double>(window.x()),
             static_cast<double>(panel().screen()->geometry().height() - window.y() - window.height())},
            {static_cast<double>(window.width()), static_cast<double>(window.height())}};
  }
  QImage drawn() {
    QImage picture(panel().size(), QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    panel().render(&picture, {}, {}, QWidget::DrawChildren);
    return picture;
  }
};

constexpr Rect visible{{100, 50}, {1340, 800}};
constexpr Size size{480, 500};

TEST_F(ActionsSettingsWindowControllerTest, TheWindowIsBelowThePointerAtTheTopOfTheScreen) {
  EXPECT_EQ(ActionsSettingsWindowController::calculatePosition(size, {800, 400}, visible),
            (Point{560, 850 - 500 - 10}));
}

TEST_F(ActionsSettingsWindowControllerTest, AtTheFarRightTheRightEdgeStays10PointsInside) {
  EXPECT_EQ(ActionsSettingsWindowController::calculatePosition(size, {1439, 400}, visible).x,
            1440 - 480 - 10);
}

TEST_F(ActionsSettingsWindowControllerTest, AtTheFarLeftTheLeftEdgeStays10PointsInside) {
  EXPECT_EQ(ActionsSettingsWindowController::calculatePosition(size, {0, 400}, visible).x, 110);
}

TEST_F(ActionsSettingsWindowControllerTest, OnAScreenThatIsTooNarrowTheLeftEdgeStaysInside) {
  EXPECT_EQ(ActionsSettingsWindowController::calculatePosition(size, {200, 400}, {{0, 0}, {400, 800}}).x, 10);
}

TEST_F(ActionsSettingsWindowControllerTest, TheWindowIsWhereItIsMeantToBe) {
  screens.pointer = {500, 300};
  screens.visibleFrame = Rect{{0, 0}, {800, 760}};
  show();
  EXPECT_EQ(frame(), (Rect{{260, 250}, {480, 500}}));
}

TEST_F(ActionsSettingsWindowControllerTest, WithoutAMainScreenTheWindowStaysWhereItIsMade) {
  screens.visibleFrame = std::nullopt;
  show();
  EXPECT_TRUE(panel().isVisible());
}

TEST_F(ActionsSettingsWindowControllerTest, OpeningTwiceShowsOneWindowBroughtToTheFront) {
  show();
  auto *const first = controller.panel();
  screens.pointer = {700, 0};
  const QPoint place = first->pos();
  controller.showWindow();
  EXPECT_EQ(controller.panel(), first);
  EXPECT_EQ(first->pos(), place);
  int windows = 0;
  for (const auto *const widget : QApplication::topLevelWidgets()) {
    windows += qobject_cast<const ActionsSettingsPanel *>(widget) ? 1 : 0;
  }
  EXPECT_EQ(windows, 1);
  EXPECT_THAT(applicationWindows.activated, ElementsAre(first->winId(), first->winId()));
}

TEST_F(ActionsSettingsWindowControllerTest, TheWindowFloatsAndHasNoFrame) {
  show();
  EXPECT_THAT(applicationWindows.floating, ElementsAre(panel().winId()));
  EXPECT_TRUE(panel().windowFlags().testFlag(Qt::FramelessWindowHint));
  EXPECT_TRUE(panel().windowFlags().testFlag(Qt::WindowStaysOnTopHint));
  EXPECT_FALSE(panel().windowFlags().testFlag(Qt::BypassWindowManagerHint));
  EXPECT_FALSE(panel().testAttribute(Qt::WA_QuitOnClose));
}

TEST_F(ActionsSettingsWindowControllerTest, EveryWayToCloseReleasesTheWindow) {
  const std::vector<std::function<void()>> ways{[this] { testing::button(panel(), "Done").click(); },
                                                [this] { testing::button(panel(), "Close").click(); },
                                                [] { press(Qt::Key_Escape); }, [this] { panel().close(); },
                                                [this] { controller.closeWindow(); }};
  for (const auto &way : ways) {
    show();
    const QPointer<QWidget> shown(controller.panel());
    way();
    EXPECT_EQ(controller.panel(), nullptr);
    EXPECT_FALSE(shown->isVisible());
    testing::settle();
    EXPECT_TRUE(shown.isNull());
  }
  controller.closeWindow();
}

TEST_F(ActionsSettingsWindowControllerTest, TheNextWindowIsAFreshOne) {
  show();
  click(panel(), "Edit");
  ASSERT_TRUE(editor());
  testing::type(QStringLiteral("typed"));
  controller.closeWindow();
  testing::settle();
  show();
  EXPECT_FALSE(view().editingAction());
  EXPECT_FALSE(editor());
  EXPECT_THAT(storedNames(),
              ElementsAre("Explain Selected Text", "Explain Screen Region", "Translate to English"));
}

TEST_F(ActionsSettingsWindowControllerTest, ClosingWhileAHotkeyIsRecordedEndsTheRecordingAtOnce) {
  show();
  click(panel(), "Edit");
  click(panel(), "Change");
  ASSERT_EQ(monitors.localMonitorCount(), 1U);
  controller.closeWindow();
  EXPECT_EQ(monitors.localMonitorCount(), 0U);
}

TEST_F(ActionsSettingsWindowControllerTest, AWindowThatIsOpenEndsWithItsController) {
  {
    ActionsSettingsWindowController other(manager, monitors, screens, panelWindows, applicationWindows,
                                          queue);
    other.showWindow();
  }
  for (const auto *const widget : QApplication::topLevelWidgets()) {
    EXPECT_FALSE(qobject_cast<const ActionsSettingsPanel *>(widget));
  }
}

TEST_F(ActionsSettingsWindowControllerTest, CornersAreRoundWhereTheScreenIsComposited) {
  panelWindows.translucencySupported = true;
  show();
  const QImage round = drawn();
  EXPECT_EQ(qAlpha(round.pixel(0, 0)), 0);
  EXPECT_EQ(qAlpha(round.pixel(479, 499)), 0);
  EXPECT_EQ(qAlpha(round.pixel(240, 0)), 255);
  panelWindows.setTranslucencySupported(false);
  const QImage square = drawn();
  EXPECT_EQ(qAlpha(square.pixel(0, 0)), 255);
  EXPECT_EQ(qAlpha(square.pixel(479, 499)), 255);
}

TEST_F(ActionsSettingsWindowControllerTest, ASheetDoesNotDimWhatIsOutsideTheRoundCorners) {
  panelWindows.translucencySupported = true;
  show();
  click(panel(), "Edit");
  const QImage picture = drawn();
  EXPECT_EQ(qAlpha(picture.pixel(0, 0)), 0);
  EXPECT_EQ(qAlpha(picture.pixel(479, 499)), 0);
}

TEST_F(ActionsSettingsWindowControllerTest, TheWindowGrowsWithTheTextAsFarAsTheScreenHasRoom) {
  show();
  EXPECT_EQ(panel().size(), QSize(480, 500));
  setTextScale(1.25);
  EXPECT_EQ(panel().size(), QSize(600, 625));
  setTextScale(3);
  const QSize screen = panel().screen()->availableSize();
  EXPECT_LE(panel().height(), screen.height());
  EXPECT_LE(panel().width(), screen.width());
  setTextScale(1);
  EXPECT_EQ(panel().size(), QSize(480, 500));
}

}  // namespace
}  // namespace lumiwren
