#include "popup/KeyablePanel.h"

#include "markdown/views/SelectableTextView.h"
#include "platform/KeyCodes.h"
#include "popup/ConversationView.h"
#include "popup/PopupTesting.h"
#include "popup/ResizeFrame.h"
#include "popup/SourceTextLabel.h"

#include <QApplication>
#include <QMenu>
#include <QMouseEvent>

#include <string>
#include <tuple>
#include <utility>

namespace lumiwren {
namespace {

const QMargins shadow = PanelShadow::margins;

class KeyablePanelTest : public testing::PopupTest {
protected:
  void showPanel(bool translucent = false) {
    windows.translucencySupported = translucent;
    show();
    update("A");
    controller.hostingView()->refresh();
    QCoreApplication::sendPostedEvents();
  }
  KeyablePanel &panel() { return *controller.panel(); }
  QRect panelGeometry() { return panel().panelRect().translated(panel().pos()); }
  const WindowForm &form() { return windows.forms.at(panel().winId()); }

  /// Sends what the display server would send: to the part that is at that place of the panel's window, or to
  /// the one that was pressed.
  void mouse(QEvent::Type type, QPoint global, Qt::MouseButtons buttons) {
    const QPoint local = global - panel().pos();
    if (type == QEvent::MouseButtonPress) {
      QWidget *const child = panel().childAt(local);
      pressed_ = child ? child : &panel();
    }
    const auto button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, pressed_->mapFrom(&panel(), local), global, button, buttons, Qt::NoModifier);
    QApplication::sendEvent(pressed_, &event);
  }
  void press(QPoint global) { mouse(QEvent::MouseButtonPress, global, Qt::LeftButton); }
  void moveTo(QPoint global) { mouse(QEvent::MouseMove, global, Qt::LeftButton); }
  void release(QPoint global) { mouse(QEvent::MouseButtonRelease, global, Qt::NoButton); }
  template <typename T>
  QPoint middleOf() {
    auto *const part = panel().findChild<T *>();
    return part->mapToGlobal(part->rect().center());
  }

private:
  QWidget *pressed_ = nullptr;
};

TEST_F(KeyablePanelTest, WithoutACompositorTheWindowIsThePanelWithItsCornersCut) {
  showPanel(false);
  EXPECT_FALSE(panel().isTranslucent());
  EXPECT_EQ(panel().size(), QSize(400, 300));
  EXPECT_EQ(panel().panelRect(), QRect(0, 0, 400, 300));
  EXPECT_GT(form().visible.size(), 1U);
  EXPECT_GT(form().visible.front().x, 0);
  EXPECT_TRUE(form().clickable.empty());
  EXPECT_EQ(form().shadow, WindowForm::Shadow{});
}

TEST_F(KeyablePanelTest, WithACompositorTheShadowIsInTheWindowAndNotInThePanel) {
  screens.pointer = {100, 700};
  showPanel(true);
  EXPECT_TRUE(panel().isTranslucent());
  EXPECT_EQ(panelGeometry().size(), QSize(400, 300));
  EXPECT_EQ(panelGeometry().x(), 110);
  EXPECT_EQ(panel().geometry(), panelGeometry().marginsAdded(shadow));
  EXPECT_EQ(controller.hostingView()->geometry(), panel().panelRect());
  EXPECT_EQ(panel().minimumSize(), QSize(300, 200).grownBy(shadow));
  EXPECT_EQ(panel().maximumSize(), QSize(800, 600).grownBy(shadow));
  EXPECT_TRUE(form().visible.empty());
  ASSERT_EQ(form().clickable.size(), 1U);
  const auto &part = form().clickable.front();
  const QRect clickable(part.x, part.y, part.width, part.height);
  EXPECT_TRUE(clickable.contains(panel().panelRect()));
  EXPECT_TRUE(panel().panelRect().adjusted(-8, -8, 8, 8).contains(clickable));

  windows.anyFrame = {{94, 370}, {432, 332}};
  EXPECT_EQ(panel().frame(), (Rect{{110, 390}, {400, 300}}));
}

TEST_F(KeyablePanelTest, AClickOnTheShadowIsOutside) {
  showPanel(true);
  windows.anyFrame = {{94, 370}, {432, 332}};
  advance(std::chrono::milliseconds(500));
  screens.pointer = {110, 390};
  monitors.pressElsewhere({EventKind::LeftMouseDown});
  queue.runPending();
  EXPECT_TRUE(controller.panel());
  screens.pointer = {109, 390};
  monitors.pressElsewhere({EventKind::LeftMouseDown});
  queue.runPending();
  EXPECT_FALSE(controller.panel());
}

TEST_F(KeyablePanelTest, AnOpenPanelFollowsACompositorThatStartsOrEnds) {
  showPanel(false);
  const QRect place = panelGeometry();
  windows.setTranslucencySupported(true);
  EXPECT_TRUE(panel().isTranslucent());
  EXPECT_EQ(panelGeometry(), place);
  EXPECT_EQ(panel().geometry(), place.marginsAdded(shadow));
  EXPECT_EQ(controller.hostingView()->geometry(), panel().panelRect());
  EXPECT_EQ(form().shadow.bottom, shadow.bottom());
  windows.setTranslucencySupported(false);
  EXPECT_FALSE(panel().isTranslucent());
  EXPECT_EQ(panel().geometry(), place);
  EXPECT_EQ(controller.hostingView()->geometry(), panel().rect());
  EXPECT_EQ(form().shadow, WindowForm::Shadow{});
  EXPECT_FALSE(form().visible.empty());
}

TEST_F(KeyablePanelTest, AHiddenPanelFollowsACompositorThatStartsOrEnds) {
  for (const bool isTold : {true, false}) {
    SCOPED_TRACE(isTold);
    windows.translucencySupported = false;
    showPanel(false);
    const QRect place = panelGeometry();
    controller.dismiss();
    queue.runPending();
    windows.translucencySupported = true;
    if (isTold) {
      windows.setTranslucencySupported(true);
    }
    showPanel(true);
    EXPECT_TRUE(panel().isTranslucent());
    EXPECT_EQ(panelGeometry(), place);
    EXPECT_EQ(controller.hostingView()->geometry(), panel().panelRect());
    controller.dismiss();
    queue.runPending();
  }
}

TEST_F(KeyablePanelTest, IsMovedWhereverThereIsNeitherControlNorText) {
  for (const bool translucent : {false, true}) {
    SCOPED_TRACE(translucent);
    showPanel(translucent);
    const QPoint corner = panelGeometry().topLeft();
    auto *const conversation = panel().findChild<ConversationView *>();
    const QPoint belowTheAnswer =
        conversation->mapToGlobal(QPoint(conversation->width() / 2, conversation->height() - 6));
    const std::pair<const char *, QPoint> places[] = {
        {"above the source text", corner + QPoint(200, 7)},
        {"the source text", middleOf<SourceTextLabel>()},
        {"the upper divider", conversation->mapToGlobal(QPoint(100, -1))},
        {"empty conversation", belowTheAnswer},
        {"the conversation's padding", conversation->mapToGlobal(QPoint(8, 8))},
        {"the lower divider", conversation->mapToGlobal(QPoint(100, conversation->height()))},
        {"beside the field", controller.hostingView()->mapToGlobal(QPoint(10, 250))},
        {"the footer", corner + QPoint(300, 280)},
        {"under the footer", corner + QPoint(200, 294)},
    };
    for (const auto &[name, place] : places) {
      SCOPED_TRACE(name);
      const QPoint before = panel().pos();
      press(place);
      EXPECT_EQ(panel().pos(), before);
      moveTo(place + QPoint(1, 0));
      EXPECT_EQ(panel().pos(), before + QPoint(1, 0));
      moveTo(place + QPoint(40, 30));
      EXPECT_EQ(panel().pos(), before + QPoint(40, 30));
      moveTo(place);
      release(place);
      EXPECT_EQ(panel().pos(), before);
      EXPECT_FALSE(panel().allowsKeyStatus());
    }
    controller.dismiss();
    queue.runPending();
  }
}

TEST_F(KeyablePanelTest, IsNotMovedByItsControlsAndTexts) {
  showPanel();
  auto &answer = *panel().findChild<SelectableTextView *>();
  for (const QPoint place :
       {answer.mapToGlobal(QPoint(4, 6)), middleOf<QLineEdit>(), middleOf<QPushButton>()}) {
    const QPoint before = panel().pos();
    press(place);
    moveTo(place + QPoint(40, 30));
    release(place + QPoint(40, 30));
    EXPECT_EQ(panel().pos(), before);
  }
}

TEST_F(KeyablePanelTest, ADragWhoseReleaseNobodyToldEndsWithTheNextMove) {
  showPanel();
  for (const auto &[hold, buttons] :
       {std::pair(QPoint(200, 7), Qt::RightButton), std::pair(QPoint(2, 150), Qt::NoButton)}) {
    const QPoint place = panelGeometry().topLeft() + hold;
    const QRect before = panel().geometry();
    press(place);
    mouse(QEvent::MouseMove, place + QPoint(50, 50), buttons);
    EXPECT_EQ(panel().geometry(), before);
    moveTo(place + QPoint(60, 60));
    EXPECT_EQ(panel().geometry(), before);
  }
}

TEST_F(KeyablePanelTest, APanelThatGoesAwayWhileItIsDraggedLeavesNothingBehind) {
  showPanel();
  const QPoint corner = panelGeometry().topLeft();
  for (const QPoint hold : {QPoint(200, 7), QPoint(2, 150)}) {
    SCOPED_TRACE(hold.x());
    press(corner + hold);
    moveTo(corner + hold + QPoint(-10, 10));
    controller.dismiss();
    queue.runPending();
    showPanel();
    const QRect before = panel().geometry();
    EXPECT_EQ(before.size(), QSize(400, 300));
    moveTo(corner + hold + QPoint(60, 60));
    EXPECT_EQ(panel().geometry(), before);
  }
}

TEST_F(KeyablePanelTest, ACompositorThatStartsDuringADragEndsIt) {
  showPanel();
  const QPoint place = panelGeometry().topLeft() + QPoint(200, 7);
  press(place);
  moveTo(place + QPoint(5, 5));
  windows.setTranslucencySupported(true);
  const QRect before = panel().geometry();
  moveTo(place + QPoint(60, 60));
  EXPECT_EQ(panel().geometry(), before);
}

TEST_F(KeyablePanelTest, AMenuThatIsOpenGoesWithThePanel) {
  showPanel();
  QMenu menu;
  menu.addAction(QStringLiteral("Copy"));
  menu.popup(QPoint(10, 10));
  ASSERT_TRUE(menu.isVisible());
  controller.dismiss();
  queue.runPending();
  EXPECT_FALSE(menu.isVisible());
}

TEST_F(KeyablePanelTest, EscapeClosesAnOpenMenuAndNotThePanel) {
  showPanel();
  QMenu menu;
  menu.addAction(QStringLiteral("Copy"));
  menu.popup(QPoint(10, 10));
  EXPECT_EQ(monitors.pressKeyHere(keyCode::escape), LocalEventResult::Pass);
  queue.runPending();
  EXPECT_TRUE(controller.panel());
  menu.close();
  EXPECT_EQ(monitors.pressKeyHere(keyCode::escape), LocalEventResult::Consume);
  queue.runPending();
  EXPECT_FALSE(controller.panel());
}

struct EdgeCase {
  const char *name;
  QPointF place;  // of the panel's size
  QPoint outwards;
  Qt::CursorShape cursor;
};

class KeyablePanelEdges : public KeyablePanelTest, public ::testing::WithParamInterface<EdgeCase> {};

TEST_P(KeyablePanelEdges, ResizeWithinTheLimitsAndLeaveTheOppositeEdgesAlone) {
  const auto &[name, place, outwards, cursor] = GetParam();
  for (const bool translucent : {false, true}) {
    SCOPED_TRACE(translucent);
    showPanel(translucent);
    const QRect start = panelGeometry();
    // On the outline, and where there is a shadow also a little outside.
    const int beyond = translucent ? 4 : -1;
    const QPoint hold(start.x() + static_cast<int>(place.x() * (start.width() - 1)) + beyond * outwards.x(),
                      start.y() + static_cast<int>(place.y() * (start.height() - 1)) + beyond * outwards.y());
    auto *const edges = panel().childAt(hold - panel().pos());
    ASSERT_TRUE(qobject_cast<ResizeFrame *>(edges));
    QMouseEvent hover(QEvent::MouseMove, edges->mapFromGlobal(hold), hold, Qt::NoButton, Qt::NoButton,
                      Qt::NoModifier);
    QApplication::sendEvent(edges, &hover);
    EXPECT_EQ(edges->cursor().shape(), cursor);

    const auto expectOppositeEdgesKept = [&](const QRect &edge) {
      if (outwards.x() <= 0) {
        EXPECT_EQ(edge.right(), start.right());
      }
      if (outwards.x() >= 0) {
        EXPECT_EQ(edge.left(), start.left());
      }
      if (outwards.y() <= 0) {
        EXPECT_EQ(edge.bottom(), start.bottom());
      }
      if (outwards.y() >= 0) {
        EXPECT_EQ(edge.top(), start.top());
      }
    };
    press(hold);
    for (const auto &[distance, width, height] :
         {std::tuple(20, 420, 320), std::tuple(2000, 800, 600), std::tuple(-2000, 300, 200)}) {
      moveTo(hold + outwards * distance);
      const QRect resized = panelGeometry();
      EXPECT_EQ(resized.width(), outwards.x() == 0 ? 400 : width);
      EXPECT_EQ(resized.height(), outwards.y() == 0 ? 300 : height);
      expectOppositeEdgesKept(resized);
      EXPECT_EQ(controller.hostingView()->size(), resized.size());
    }
    moveTo(hold);
    EXPECT_EQ(panelGeometry(), start);
    release(hold);
    controller.dismiss();
    queue.runPending();
  }
}

INSTANTIATE_TEST_SUITE_P(All, KeyablePanelEdges,
                         ::testing::Values(EdgeCase{"Left", {0, 0.5}, {-1, 0}, Qt::SizeHorCursor},
                                           EdgeCase{"Right", {1, 0.5}, {1, 0}, Qt::SizeHorCursor},
                                           EdgeCase{"Top", {0.5, 0}, {0, -1}, Qt::SizeVerCursor},
                                           EdgeCase{"Bottom", {0.5, 1}, {0, 1}, Qt::SizeVerCursor},
                                           EdgeCase{"TopLeft", {0, 0}, {-1, -1}, Qt::SizeFDiagCursor},
                                           EdgeCase{"TopRight", {1, 0}, {1, -1}, Qt::SizeBDiagCursor},
                                           EdgeCase{"BottomLeft", {0, 1}, {-1, 1}, Qt::SizeBDiagCursor},
                                           EdgeCase{"BottomRight", {1, 1}, {1, 1}, Qt::SizeFDiagCursor}),
                         [](const auto &test) { return std::string(test.param.name); });

}  // namespace
}  // namespace lumiwren
