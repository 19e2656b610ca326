#include "popup/ExplanationPopupController.h"

#include "platform/KeyCodes.h"
#include "popup/PopupTesting.h"

#include <QWindow>

namespace lumiwren {
namespace {

using namespace std::chrono_literals;

struct PositionCase {
  const char *name;
  Point mouse;
  std::optional<Rect> visibleFrame;
  Point expected;
};

TEST(CalculatePosition, PrefersBelowAndRightOfThePointerInsideTheVisibleFrame) {
  const Rect screen{{0, 0}, {1440, 875}};
  const PositionCase cases[] = {
      {"room on every side", {1000, 800}, screen, {1010, 490}},
      {"right edge", {1400, 800}, screen, {1030, 490}},
      {"bottom edge flips above the pointer", {500, 100}, screen, {510, 120}},
      {"top left", {5, 870}, screen, {15, 560}},
      {"no screen", {123, 456}, std::nullopt, {123, 456}},
      {"narrow screen: the left clamp wins", {100, 800}, Rect{{0, 0}, {350, 875}}, {10, 490}},
      {"short screen: the top clamp wins", {500, 100}, Rect{{0, 0}, {1440, 320}}, {510, 10}},
      {"another screen's origin", {-1500, 500}, Rect{{-1440, 100}, {1440, 800}}, {-1430, 190}},
      {"exactly at the right edge", {1030, 800}, screen, {1040, 490}},
      {"exactly at the bottom edge", {500, 310}, screen, {510, 0}},
  };
  for (const auto &[name, mouse, visibleFrame, expected] : cases) {
    EXPECT_EQ(ExplanationPopupController::calculatePosition({400, 300}, mouse, visibleFrame), expected)
        << name;
  }
}

class ExplanationPopupControllerTest : public testing::PopupTest {
protected:
  void clickElsewhere(Point at) {
    screens.pointer = at;
    monitors.pressElsewhere({EventKind::LeftMouseDown});
    queue.runPending();
  }
};

TEST_F(ExplanationPopupControllerTest, ShowTakesEffectOnTheMainQueue) {
  controller.show("source", "answer", true, "failure");
  EXPECT_FALSE(controller.panel());
  queue.runPending();
  ASSERT_TRUE(controller.panel());
  EXPECT_TRUE(controller.panel()->isVisible());
  EXPECT_EQ(state().originalText(), "source");
  EXPECT_EQ(state().explanation(), "answer");
  EXPECT_TRUE(state().isLoading());
  EXPECT_EQ(state().error(), "failure");
  EXPECT_TRUE(history().empty());
}

TEST_F(ExplanationPopupControllerTest, ShowEmptiesTheHistory) {
  show();
  update("A");
  ASSERT_EQ(history().size(), 1U);
  show("other");
  EXPECT_TRUE(history().empty());
}

TEST_F(ExplanationPopupControllerTest, ThePanelIsAtThePointerAndWantsNoKeyboard) {
  screens.pointer = {100, 700};
  show();
  auto &panel = *controller.panel();
  EXPECT_EQ(panel.size(), QSize(400, 300));
  EXPECT_FALSE(panel.allowsKeyStatus());
  EXPECT_FALSE(panel.canBecomeKey());
  EXPECT_FALSE(panel.canBecomeMain());
  EXPECT_TRUE(panel.testAttribute(Qt::WA_ShowWithoutActivating));
  EXPECT_TRUE(panel.windowHandle()->flags().testFlag(Qt::WindowDoesNotAcceptFocus));
  EXPECT_EQ(windows.makeKeyCount, 0);
  EXPECT_EQ(panel.minimumSize(), QSize(300, 200));
  EXPECT_EQ(panel.maximumSize(), QSize(800, 600));
  EXPECT_EQ(panel.x(), 110);
}

TEST_F(ExplanationPopupControllerTest, UpdateContentAppendsOneAssistantMessageAndThenRewritesIt) {
  show();
  update("A", true);
  ASSERT_EQ(history().size(), 1U);
  EXPECT_EQ(history()[0].role, "assistant");
  const auto id = history()[0].id;
  update("AB", false);
  ASSERT_EQ(history().size(), 1U);
  EXPECT_EQ(history()[0].content, "AB");
  EXPECT_EQ(history()[0].id, id);
  EXPECT_EQ(state().explanation(), "AB");
}

TEST_F(ExplanationPopupControllerTest, UpdateContentWithAnErrorAloneLeavesTheHistory) {
  show();
  update("A", true);
  update(std::nullopt, false, "failure");
  EXPECT_EQ(state().explanation(), std::nullopt);
  EXPECT_EQ(state().error(), "failure");
  ASSERT_EQ(history().size(), 1U);
  EXPECT_EQ(history()[0].content, "A");
}

TEST_F(ExplanationPopupControllerTest, AnOpenPanelStaysWhereItIsAndShowsTheNewContent) {
  screens.pointer = {100, 700};
  show();
  auto *const panel = controller.panel();
  const auto place = panel->pos();
  update("A");
  screens.pointer = {600, 500};
  controller.show("other", "B", false, std::nullopt);
  queue.runPending();
  queue.runPending();  // The panel's update is a step of its own.
  EXPECT_EQ(controller.panel(), panel);
  EXPECT_EQ(panel->pos(), place);
  EXPECT_EQ(state().originalText(), "other");
  ASSERT_EQ(history().size(), 1U);
  EXPECT_EQ(history()[0].content, "B");
}

TEST_F(ExplanationPopupControllerTest, EscapeInAnotherApplicationDismisses) {
  show();
  monitors.pressKeyElsewhere(keyCode::t);
  queue.runPending();
  EXPECT_TRUE(controller.panel());
  monitors.pressKeyElsewhere(keyCode::escape);
  queue.runPending();
  EXPECT_FALSE(controller.panel());
}

TEST_F(ExplanationPopupControllerTest, EscapeInsideDismissesAndIsSwallowedAndOtherKeysPass) {
  show();
  EXPECT_EQ(monitors.pressKeyHere(keyCode::e), LocalEventResult::Pass);
  EXPECT_EQ(monitors.pressKeyHere(keyCode::escape), LocalEventResult::Consume);
  queue.runPending();
  EXPECT_FALSE(controller.panel());
  EXPECT_EQ(monitors.pressKeyHere(keyCode::escape), LocalEventResult::Pass);
}

TEST_F(ExplanationPopupControllerTest, AClickOutsideDismissesFromHalfASecondAfterShowing) {
  windows.anyFrame = {{100, 100}, {400, 300}};
  show();
  advance(499ms);
  clickElsewhere({10, 10});
  EXPECT_TRUE(controller.panel());
  advance(1ms);
  clickElsewhere({10, 10});
  EXPECT_FALSE(controller.panel());
}

TEST_F(ExplanationPopupControllerTest, AClickInAnotherApplicationInsideTheFrameLeavesThePanel) {
  windows.anyFrame = {{100, 100}, {400, 300}};
  show();
  advance(500ms);
  clickElsewhere({100, 100});
  EXPECT_TRUE(controller.panel());
  clickElsewhere({500, 100});
  EXPECT_FALSE(controller.panel());
}

TEST_F(ExplanationPopupControllerTest, APanelShownAgainSoonHasItsOwnHalfSecond) {
  windows.anyFrame = {{100, 100}, {400, 300}};
  show();
  advance(300ms);
  controller.dismiss();
  queue.runPending();
  show();
  advance(300ms);
  clickElsewhere({10, 10});
  EXPECT_TRUE(controller.panel());
  advance(200ms);
  clickElsewhere({10, 10});
  EXPECT_FALSE(controller.panel());
}

TEST_F(ExplanationPopupControllerTest, DismissedWithinHalfASecondNoClickMonitorIsInstalled) {
  show();
  EXPECT_EQ(monitors.globalMonitorCount(), 1U);
  EXPECT_EQ(monitors.localMonitorCount(), 1U);
  controller.dismiss();
  queue.runPending();
  advance(1000ms);
  EXPECT_EQ(monitors.globalMonitorCount(), 0U);
  EXPECT_EQ(monitors.localMonitorCount(), 0U);
}

TEST_F(ExplanationPopupControllerTest, DismissThenShowTakeEffectInThatOrder) {
  show();
  controller.dismiss();
  controller.show("next", std::nullopt, true, std::nullopt);
  queue.runPending();
  ASSERT_TRUE(controller.panel());
  EXPECT_EQ(state().originalText(), "next");
}

TEST_F(ExplanationPopupControllerTest, DismissalKeepsTheState) {
  show();
  update("A");
  controller.dismiss();
  queue.runPending();
  EXPECT_FALSE(controller.hostingView());
  EXPECT_EQ(state().explanation(), "A");
  EXPECT_EQ(history().size(), 1U);
}

TEST_F(ExplanationPopupControllerTest, DismissWithoutAPanelDoesNothing) {
  controller.dismiss();
  queue.runPending();
  EXPECT_FALSE(controller.panel());
}

TEST_F(ExplanationPopupControllerTest, ANewPanelIsAsIfNoneHadBeenThereBefore) {
  controller.prepare();
  show();
  auto &field = *controller.panel()->findChild<QLineEdit *>();
  field.setText(QStringLiteral("typed"));
  controller.panel()->makeKey();
  controller.panel()->resize(640, 480);
  testing::button(*controller.panel(), "Copy Result").click();
  EXPECT_TRUE(windows.keyWindow);
  controller.dismiss();
  queue.runPending();
  EXPECT_FALSE(windows.keyWindow);
  show();
  EXPECT_EQ(controller.panel()->size(), QSize(400, 300));
  EXPECT_FALSE(controller.panel()->allowsKeyStatus());
  EXPECT_TRUE(field.text().isEmpty());
  EXPECT_NO_THROW(testing::button(*controller.panel(), "Copy Result"));
}

TEST_F(ExplanationPopupControllerTest, OnCopyPutsTheExplanationOnThePasteboard) {
  show();
  update("# The answer");
  controller.hostingView()->callbacks().onCopy();
  EXPECT_EQ(pasted(), "# The answer");
}

TEST_F(ExplanationPopupControllerTest, OnCopyWithoutAnExplanationPutsTheEmptyString) {
  pasteboard.otherPuts(testing::FakePasteboard::text("before"));
  show();
  controller.hostingView()->callbacks().onCopy();
  ASSERT_EQ(pasteboard.puts().size(), 1U);
  EXPECT_EQ(pasted(), "");
}

TEST(ExplanationPopupControllerEnd, WhatIsLeftBehindDoesNothing) {
  testing::PopupParts parts;
  parts.keychain.saveAPIKey(Secret::copyOf("key"));
  const auto exchange = parts.http.expect();
  {
    ExplanationPopupController controller = parts.makeController();
    controller.show("source", std::nullopt, true, std::nullopt);
    parts.queue.runPending();
    controller.sendFollowUp("Q");
    controller.dismiss();
    controller.show("more", std::nullopt, true, std::nullopt);
  }
  EXPECT_EQ(parts.monitors.globalMonitorCount(), 0U);
  EXPECT_EQ(parts.monitors.localMonitorCount(), 0U);
  exchange->respond(200).end();
  parts.http.waitForRequests(1);
  while (!exchange->isClosed()) {
    parts.queue.runPending();
    std::this_thread::yield();
  }
  parts.queue.runPending();
  parts.queue.close();
  EXPECT_TRUE(Task::endAll(10s));
}

}  // namespace
}  // namespace lumiwren
