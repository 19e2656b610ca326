#include "settings/ActionsTesting.h"

#include "ui/BoxedLabel.h"
#include "ui/ElidedLabel.h"

#include <QAccessible>
#include <QScreen>
#include <QScrollBar>

#include <algorithm>

namespace lumiwren {
namespace {

using testing::button;
using testing::buttons;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using testing::press;
using InputType = CustomAction::InputType;

class ActionsSettingsViewTest : public testing::ActionsWindowTest {
protected:
  void answer(const char *name) {
    ASSERT_TRUE(alert());
    click(*alert(), name);
    panel().activateWindow();
    testing::settle();
  }
  std::string focused() {
    auto *const seen = QAccessible::queryAccessibleInterface(QApplication::focusWidget());
    return seen ? seen->text(QAccessible::Name).toStdString() : "";
  }
  std::vector<std::string> focusedAfter(int count, Qt::Key key) {
    std::vector<std::string> result;
    for (int index = 0; index < count; ++index) {
      press(key);
      result.push_back(focused());
    }
    return result;
  }
  void addMany(int count) {
    for (int index = 0; index < count; ++index) {
      manager.addAction(action("Action " + std::to_string(index)));
    }
  }
  int scrolled() { return list().verticalScrollBar()->value(); }
  bool isInView(const ActionRow &shown) {
    const QRect seen(shown.mapTo(list().viewport(), QPoint()), shown.size());
    return list().viewport()->rect().contains(seen);
  }
};

TEST_F(ActionsSettingsViewTest, ListsTheActionsInTheirOrder) {
  manager.addAction(action("Mine", InputType::ScreenCapture));
  show();
  EXPECT_THAT(names(),
              ElementsAre("Explain Selected Text", "Explain Screen Region", "Translate to English", "Mine"));
  EXPECT_THAT(testing::texts(row(0)),
              ElementsAre("Explain Selected Text", "Default", "Text Selection", "⌥⇧E"));
  EXPECT_THAT(testing::texts(row(3)), ElementsAre("Mine", "Screen Capture (OCR)", "⌥⇧1"));
  EXPECT_EQ(testing::texts(view()).front(), "Actions");
}

TEST_F(ActionsSettingsViewTest, TextsHaveTheirSizes) {
  show();
  const auto fonts = [this] {
    std::vector<std::pair<int, int>> result;
    for (const auto *const label : row(0).findChildren<QLabel *>()) {
      result.emplace_back(label->font().pixelSize(), label->font().weight());
    }
    return result;
  }();
  EXPECT_EQ(fonts[0], std::pair(13, int(QFont::Medium)));
  EXPECT_EQ(fonts[1], std::pair(9, int(QFont::Medium)));
  EXPECT_EQ(fonts[2].first, 11);
  const auto *const title = view().findChild<QLabel *>();
  EXPECT_EQ(title->font().pixelSize(), 13);
  EXPECT_EQ(title->font().weight(), QFont::DemiBold);
}

TEST_F(ActionsSettingsViewTest, RowsShareTheirColumns) {
  manager.addAction(action(std::string(300, 'x')));
  auto wide = action("wide");
  wide.hotkey = {49, 0x1E0000};
  manager.addAction(wide);
  show();
  for (const char *const name : {"Edit", "Delete"}) {
    for (std::size_t index = 1; index < list().rows().size(); ++index) {
      EXPECT_EQ(button(row(index), name).x(), button(row(0), name).x());
    }
  }
  const auto hotkeyEnd = [this](std::size_t index) {
    return row(index).findChildren<BoxedLabel *>().last()->geometry().right();
  };
  for (std::size_t index = 1; index < list().rows().size(); ++index) {
    EXPECT_EQ(hotkeyEnd(index), hotkeyEnd(0));
  }
}

TEST_F(ActionsSettingsViewTest, WithAllActionsThereNothingIsToBeRestored) {
  show();
  EXPECT_TRUE(buttons(panel(), "Restore Defaults").empty());
  EXPECT_TRUE(buttons(panel(), "Restore Default Actions").empty());
  EXPECT_TRUE(button(panel(), "Add Action").isVisible());
  EXPECT_TRUE(button(panel(), "Done").isVisible());
}

TEST_F(ActionsSettingsViewTest, AfterDeletingADefaultItCanBeRestoredOnce) {
  manager.addAction(action("X"));
  show();
  click(row(1), "Delete");
  answer("Delete");
  EXPECT_THAT(names(), ElementsAre("Explain Selected Text", "Translate to English", "X"));
  click(panel(), "Restore Defaults");
  EXPECT_THAT(names(),
              ElementsAre("Explain Selected Text", "Explain Screen Region", "Translate to English", "X"));
  EXPECT_TRUE(buttons(panel(), "Restore Defaults").empty());
}

TEST_F(ActionsSettingsViewTest, AssistiveTechnologyReadsTheRowsInTheirOrder) {
  manager.addAction(action("X"));
  show();
  click(row(0), "Delete");
  answer("Delete");
  click(panel(), "Restore Defaults");
  auto *const rows = QAccessible::queryAccessibleInterface(list().widget());
  for (int index = 0; index < 4; ++index) {
    EXPECT_EQ(rows->child(index)->object(), &row(static_cast<std::size_t>(index)));
  }
}

TEST_F(ActionsSettingsViewTest, WithAllDefaultsDeletedTheEmptyListOffersToRestoreThem) {
  show();
  deleteAll();
  const auto texts = testing::texts(view());
  EXPECT_THAT(texts,
              ElementsAre("Actions", "No Actions", "Create actions with your own hotkeys and prompts."));
  EXPECT_FALSE(list().isVisible());
  click(panel(), "Restore Default Actions");
  EXPECT_THAT(names(), ElementsAre("Explain Selected Text", "Explain Screen Region", "Translate to English"));
  EXPECT_TRUE(list().isVisible());
  EXPECT_TRUE(buttons(panel(), "Restore Default Actions").empty());
}

TEST_F(ActionsSettingsViewTest, TheEmptyStateIsGoneWhileTheFirstActionIsAdded) {
  deleteAll();
  show();
  click(panel(), "Add Action");
  EXPECT_TRUE(view().isAddingNew());
  EXPECT_THAT(testing::texts(view()), Not(Contains("No Actions")));
  click(*editor(), "Cancel");
  EXPECT_FALSE(view().isAddingNew());
  EXPECT_THAT(testing::texts(view()), Contains("No Actions"));
}

TEST_F(ActionsSettingsViewTest, AnActionIsAddedAtTheEndAndSaved) {
  addMany(20);
  show();
  click(panel(), "Add Action");
  EXPECT_EQ(scrolled(), 0);
  testing::type(QStringLiteral("New"));
  promptArea().setPlainText(QStringLiteral("p"));
  const auto writes = defaults.writeCount(CustomActionManager::userDefaultsKey);
  click(*editor(), "Save");
  EXPECT_FALSE(editor());
  EXPECT_FALSE(view().isAddingNew());
  EXPECT_EQ(storedNames().back(), "New");
  EXPECT_EQ(names().back(), "New");
  EXPECT_EQ(defaults.writeCount(CustomActionManager::userDefaultsKey), writes + 1);
  EXPECT_TRUE(isInView(*list().rows().back()));
}

TEST_F(ActionsSettingsViewTest, EditingChangesTheActionInItsPlace) {
  show();
  click(row(1), "Edit");
  EXPECT_EQ(view().editingAction(), CustomAction::defaultExplainScreen());
  EXPECT_EQ(nameField().text(), QStringLiteral("Explain Screen Region"));
  nameField().setText(QStringLiteral("Mine"));
  click(*editor(), "Save");
  EXPECT_FALSE(view().editingAction());
  EXPECT_THAT(names(), ElementsAre("Explain Selected Text", "Mine", "Translate to English"));
  EXPECT_THAT(testing::texts(row(1)), Not(Contains("Default")));
  EXPECT_TRUE(button(panel(), "Restore Defaults").isVisible());
}

TEST_F(ActionsSettingsViewTest, CancellingAnEditorChangesNothing) {
  show();
  const auto before = manager.actions();
  for (const auto &cancel : {std::function<void()>([this] { click(*editor(), "Cancel"); }),
                             std::function<void()>([] { press(Qt::Key_Escape); })}) {
    click(row(0), "Edit");
    nameField().setText(QStringLiteral("other"));
    cancel();
    testing::settle();
    EXPECT_FALSE(editor());
    EXPECT_FALSE(view().editingAction());
    EXPECT_TRUE(controller.panel());
  }
  EXPECT_EQ(manager.actions(), before);
}

TEST_F(ActionsSettingsViewTest, EscapeEndsARecordingThenTheEditorThenTheWindow) {
  show();
  click(row(0), "Edit");
  click(*editor(), "Change");
  press(Qt::Key_Escape);
  EXPECT_EQ(monitors.localMonitorCount(), 0U);
  EXPECT_TRUE(editor());
  press(Qt::Key_Escape);
  testing::settle();
  EXPECT_FALSE(editor());
  EXPECT_TRUE(controller.panel());
  press(Qt::Key_Escape);
  EXPECT_FALSE(controller.panel());
}

TEST_F(ActionsSettingsViewTest, DeletingAsksFirst) {
  show();
  click(row(2), "Delete");
  ASSERT_TRUE(alert());
  EXPECT_THAT(testing::texts(*alert()),
              ElementsAre("Delete Action",
                          "Are you sure you want to delete \"Translate to English\"? This action "
                          "cannot be undone."));
  EXPECT_THAT(applicationWindows.activated, Contains(alert()->winId()));
  answer("Cancel");
  EXPECT_FALSE(alert());
  EXPECT_EQ(manager.actions().size(), 3U);
}

TEST_F(ActionsSettingsViewTest, TheQuestionAboutAnEndlessNameFitsOnTheScreen) {
  std::string name;
  for (int index = 0; index < 10'000; ++index) {
    name += index % 2 == 0 ? "word " : "line\n";
  }
  manager.addAction(action(name));
  show();
  click(row(3), "Delete");
  ASSERT_TRUE(alert());
  testing::settle();
  EXPECT_LT(alert()->height(), panel().screen()->availableSize().height());
}

TEST_F(ActionsSettingsViewTest, ReturnAndEscapeDoNotDelete) {
  show();
  for (const auto key : {Qt::Key_Return, Qt::Key_Escape}) {
    click(row(0), "Delete");
    ASSERT_TRUE(alert());
    alert()->activateWindow();
    testing::settle();
    press(key);
    testing::settle();
    EXPECT_FALSE(alert());
    EXPECT_EQ(manager.actions().size(), 3U);
  }
}

TEST_F(ActionsSettingsViewTest, TheWindowGetsTheKeyboardFromTheQuestion) {
  show();
  click(row(0), "Delete");
  ASSERT_TRUE(alert());
  alert()->activateWindow();
  testing::settle();
  EXPECT_THAT(applicationWindows.handedOver, IsEmpty());
  press(Qt::Key_Escape);
  EXPECT_THAT(applicationWindows.handedOver, ElementsAre(panel().winId()));
  EXPECT_EQ(applicationWindows.activated.back(), panel().winId());
}

TEST_F(ActionsSettingsViewTest, ThereIsOneQuestionAtATime) {
  show();
  click(row(0), "Delete");
  row(0).showDeleteConfirmation();
  EXPECT_EQ(panel().findChildren<Alert *>().size(), 1);
}

TEST_F(ActionsSettingsViewTest, ClosingTheWindowTakesTheQuestionWithIt) {
  show();
  click(row(0), "Delete");
  const QPointer<Alert> asked(alert());
  controller.closeWindow();
  testing::settle();
  EXPECT_TRUE(asked.isNull());
  EXPECT_EQ(manager.actions().size(), 3U);
}

TEST_F(ActionsSettingsViewTest, OfTwoActionsWithOneIDEditingChangesTheFirstAndDeletingRemovesBoth) {
  auto edited = CustomAction::defaultTranslate();
  edited.isDefault = false;
  edited.name = "Edited";
  manager.updateAction(edited);
  show();
  click(panel(), "Restore Defaults");
  EXPECT_THAT(names(), ElementsAre("Explain Selected Text", "Explain Screen Region", "Translate to English",
                                   "Edited"));

  click(row(3), "Edit");
  nameField().setText(QStringLiteral("Again"));
  click(*editor(), "Save");
  EXPECT_THAT(names(), ElementsAre("Explain Selected Text", "Explain Screen Region", "Again", "Edited"));
  EXPECT_EQ(names(), storedNames());

  click(row(3), "Delete");
  answer("Delete");
  EXPECT_THAT(names(), ElementsAre("Explain Selected Text", "Explain Screen Region"));
}

TEST_F(ActionsSettingsViewTest, NamesAreNeverMarkupNorMnemonics) {
  const std::string hostile = "<b>A</b> & &B &amp; <img src=x>";
  manager.addAction(action(hostile));
  show();
  auto &name = *row(3).findChild<ElidedLabel *>();
  EXPECT_EQ(name.text().toStdString(), hostile);
  EXPECT_EQ(name.textFormat(), Qt::PlainText);
  EXPECT_GE(name.width(), name.fontMetrics().horizontalAdvance(name.text()));
  click(row(3), "Delete");
  EXPECT_THAT(testing::texts(*alert()),
              Contains("Are you sure you want to delete \"" + hostile + "\"? This action cannot be undone."));
}

TEST_F(ActionsSettingsViewTest, LongNamesLeaveRoomForTheRestOfTheRow) {
  for (const std::string &name : {std::string(100'000, 'w'), std::string("a\nb\nc"), std::string()}) {
    manager.addAction(action(name));
  }
  std::string rightToLeft;
  for (int index = 0; index < 100; ++index) {
    rightToLeft += "ترجمة ";
  }
  manager.addAction(action(rightToLeft));
  show();
  for (auto *const each : list().rows()) {
    EXPECT_EQ(each->width(), row(0).width());
    EXPECT_EQ(each->height(), row(0).height());
    EXPECT_LE(button(*each, "Delete").geometry().right(), each->width());
    EXPECT_LE(each->findChild<ElidedLabel *>()->geometry().right(),
              each->findChildren<BoxedLabel *>().last()->geometry().left());
  }
}

TEST_F(ActionsSettingsViewTest, ArrowsGoFromRowToRow) {
  addMany(200);
  show();
  EXPECT_TRUE(row(0).hasFocus());
  press(Qt::Key_Down);
  EXPECT_TRUE(row(1).hasFocus());
  press(Qt::Key_Up);
  press(Qt::Key_Up);
  EXPECT_TRUE(row(0).hasFocus());
  press(Qt::Key_End);
  EXPECT_TRUE(row(202).hasFocus());
  EXPECT_TRUE(isInView(row(202)));
  press(Qt::Key_Down);
  EXPECT_TRUE(row(202).hasFocus());
  press(Qt::Key_PageUp);
  EXPECT_TRUE(isInView(*static_cast<ActionRow *>(QApplication::focusWidget())));
  EXPECT_FALSE(row(202).hasFocus());
  press(Qt::Key_Home);
  EXPECT_TRUE(row(0).hasFocus());
  EXPECT_EQ(scrolled(), 0);
  press(Qt::Key_PageDown);
  EXPECT_FALSE(row(0).hasFocus());
}

TEST_F(ActionsSettingsViewTest, ArrowsGoFromAButtonToTheNextRow) {
  show();
  button(row(1), "Edit").setFocus();
  press(Qt::Key_Down);
  EXPECT_TRUE(row(2).hasFocus());
}

TEST_F(ActionsSettingsViewTest, TabGoesThroughOneRowAndTheFooter) {
  addMany(20);
  show();
  press(Qt::Key_Down);
  EXPECT_THAT(focusedAfter(6, Qt::Key_Tab),
              ElementsAre("Edit", "Delete", "Add Action", "Done", "Close", "Explain Screen Region"));
  press(Qt::Key_Backtab, Qt::ShiftModifier);
  EXPECT_EQ(focused(), "Close");
}

TEST_F(ActionsSettingsViewTest, TabGoesFromTopToBottomAlsoThroughRowsThatCameLater) {
  deleteAll();
  show();
  addMany(2);
  manager.restoreDefaultActions();
  testing::settle();
  row(0).setFocus();
  EXPECT_THAT(focusedAfter(6, Qt::Key_Tab),
              ElementsAre("Edit", "Delete", "Add Action", "Done", "Close", "Explain Selected Text"));
}

TEST_F(ActionsSettingsViewTest, ReturnEditsAndDeleteAsks) {
  show();
  press(Qt::Key_Down);
  press(Qt::Key_Return);
  ASSERT_TRUE(editor());
  EXPECT_TRUE(nameField().hasFocus());
  EXPECT_EQ(nameField().text(), QStringLiteral("Explain Screen Region"));
  press(Qt::Key_Escape);
  testing::settle();
  EXPECT_TRUE(row(1).hasFocus());

  press(Qt::Key_Delete);
  answer("Delete");
  EXPECT_THAT(names(), ElementsAre("Explain Selected Text", "Translate to English"));
  EXPECT_TRUE(row(1).hasFocus());
  press(Qt::Key_Delete);
  answer("Delete");
  EXPECT_TRUE(row(0).hasFocus());
}

TEST_F(ActionsSettingsViewTest, RowsThatGoWhileAnotherWindowIsActiveHandTheKeyboardOn) {
  addMany(3);
  show();
  press(Qt::Key_End);
  QWidget other;
  other.show();
  other.activateWindow();
  testing::settle();
  ASSERT_FALSE(panel().isActiveWindow());
  for (std::size_t left = 5; left > 2; --left) {
    manager.deleteAction(manager.actions().back());
    EXPECT_EQ(panel().focusWidget(), &row(left - 1));
  }
  deleteAll();
  manager.restoreDefaultActions();
  EXPECT_EQ(names().size(), 3U);
}

TEST_F(ActionsSettingsViewTest, OfTwoActionsWithOneIDTheEditedOneKeepsItsRow) {
  auto edited = CustomAction::defaultTranslate();
  edited.isDefault = false;
  manager.updateAction(edited);
  show();
  row(2).setFocus();
  auto *const its = &row(2);
  manager.restoreDefaultActions();
  EXPECT_EQ(&row(3), its);
  EXPECT_TRUE(its->hasFocus());
  EXPECT_EQ(its->action(), edited);
}

TEST_F(ActionsSettingsViewTest, ReturnPressesTheButtonThatHasTheKeyboard) {
  show();
  button(row(1), "Delete").setFocus();
  press(Qt::Key_Return);
  EXPECT_TRUE(alert());
  EXPECT_FALSE(editor());
}

TEST_F(ActionsSettingsViewTest, AnEditKeepsTheKeyboardAndThePlaceInTheList) {
  addMany(40);
  show();
  row(30).setFocus();
  list().ensureWidgetVisible(&row(30));
  const int place = scrolled();
  ASSERT_GT(place, 0);
  auto *const edited = &row(30);
  press(Qt::Key_Return);
  nameField().setText(QStringLiteral("Edited"));
  press(Qt::Key_Return);
  testing::settle();
  EXPECT_EQ(row(30).accessibleName(), QStringLiteral("Edited"));
  EXPECT_EQ(&row(30), edited);
  EXPECT_TRUE(edited->hasFocus());
  EXPECT_EQ(scrolled(), place);
}

TEST_F(ActionsSettingsViewTest, WhatIsBelowASheetIsOutOfReach) {
  show();
  click(row(0), "Edit");
  for (int index = 0; index < 12; ++index) {
    press(Qt::Key_Tab);
    EXPECT_TRUE(editor()->isAncestorOf(QApplication::focusWidget()));
  }
  for (int index = 0; index < 12; ++index) {
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_TRUE(editor()->isAncestorOf(QApplication::focusWidget()));
  }
  auto *const open = editor();
  button(row(1), "Edit").click();
  button(panel(), "Add Action").click();
  EXPECT_EQ(editor(), open);
  EXPECT_EQ(view().editingAction()->name, "Explain Selected Text");
  EXPECT_FALSE(view().isAddingNew());
  const QPoint onEdit = button(row(1), "Edit").mapTo(&panel(), QPoint(5, 5));
  EXPECT_FALSE(list().isAncestorOf(panel().childAt(onEdit)));
}

TEST_F(ActionsSettingsViewTest, AssistiveTechnologyKnowsTheListAndTheSheet) {
  show();
  const auto role = [](QWidget &widget) { return QAccessible::queryAccessibleInterface(&widget)->role(); };
  EXPECT_EQ(role(*list().widget()), QAccessible::List);
  EXPECT_EQ(role(row(0)), QAccessible::ListItem);
  EXPECT_EQ(row(0).accessibleDescription().toStdString(), "⌥⇧E, Text Selection");
  EXPECT_EQ(button(row(0), "Edit").accessibleDescription(), QStringLiteral("Explain Selected Text"));
  click(row(0), "Edit");
  EXPECT_EQ(role(*editor()), QAccessible::Dialog);
  EXPECT_EQ(editor()->accessibleName(), QStringLiteral("Edit Action"));
}

}  // namespace
}  // namespace lumiwren
