#include "settings/ActionsTesting.h"

#include "platform/KeyCodes.h"
#include "settings/InputTypeButton.h"
#include "ui/BoxedLabel.h"
#include "ui/Palette.h"

#include <QAccessible>
#include <QTextDocument>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

namespace lumiwren {
namespace {

using testing::button;
using testing::buttons;
using ::testing::ElementsAre;
using testing::press;
using InputType = CustomAction::InputType;

constexpr std::uint64_t optionShift = modifier::option | modifier::shift;

/// An editor in a window of its own.
class ActionEditorViewTest : public testing::ActionsTest {
protected:
  void open(std::optional<CustomAction> action = std::nullopt) {
    editor = std::make_unique<ActionEditorView>(
        std::move(action), monitors, queue,
        ActionEditorView::Callbacks{.onSave = [this](const CustomAction &edited) { saved.push_back(edited); },
                                    .onCancel = [this] { ++cancelled; }});
    editor->resize(editor->sizeHint());
    editor->show();
    editor->activateWindow();
    testing::settle();
    editor->setFocus();
  }

  TextField &nameField() { return *editor->findChild<TextField *>(); }
  TextArea &promptArea() { return *editor->findChild<TextArea *>(); }
  BoxedLabel &hotkeyBox() { return *editor->findChild<BoxedLabel *>(); }
  std::string hotkey() { return hotkeyBox().text().toStdString(); }
  /// Of the row of the hotkey, whose buttons are made before those at the bottom.
  QAbstractButton &hotkeyButton(const char *name) { return button(*editor, name, 0); }
  QAbstractButton &save() { return *buttons(*editor, "Save").back(); }
  QAbstractButton &cancel() { return *buttons(*editor, "Cancel").back(); }
  LocalEventResult pressKeys(std::uint16_t code, std::uint64_t modifiers) {
    const auto result = monitors.pressKeyHere(code, modifiers);
    queue.runPending();
    return result;
  }
  /// The colour of the middle of the strongest letter.
  QRgb inkOf(QWidget &label) {
    const SemanticColors colors(label.palette());
    const QImage picture = label.grab().toImage();
    QColor ink = colors.controlBackground;
    for (int y = 4; y < picture.height() - 4; ++y) {
      for (int x = 4; x < picture.width() - 4; ++x) {
        const QColor seen = picture.pixelColor(x, y);
        if (contrastRatio(seen, colors.controlBackground) > contrastRatio(ink, colors.controlBackground)) {
          ink = seen;
        }
      }
    }
    return ink.rgb();
  }

  std::unique_ptr<ActionEditorView> editor;
  std::vector<CustomAction> saved;
  int cancelled = 0;
};

TEST_F(ActionEditorViewTest, ANewActionStartsEmptyWithOptionShift1) {
  open();
  EXPECT_EQ(hotkey(), "⌥⇧1");
  EXPECT_TRUE(nameField().text().isEmpty());
  EXPECT_TRUE(promptArea().toPlainText().isEmpty());
  EXPECT_TRUE(button(*editor, "Text Selection").isChecked());
  EXPECT_FALSE(button(*editor, "Screen Capture").isChecked());
  EXPECT_FALSE(save().isEnabled());
}

TEST_F(ActionEditorViewTest, HasTheTextsOfANewAction) {
  open();
  EXPECT_THAT(testing::texts(*editor), ElementsAre("New Action", "Name", "Hotkey", "⌥⇧1", "Input", "Prompt",
                                                   "Use {text} where the selected text should be inserted"));
  EXPECT_EQ(nameField().placeholderText(), QStringLiteral("Action name"));
  EXPECT_EQ(button(*editor, "Text Selection").toolTip(),
            QStringLiteral("Uses currently highlighted text from any application"));
  EXPECT_EQ(button(*editor, "Screen Capture").toolTip(),
            QStringLiteral("Captures a screen region and extracts text using OCR"));
  EXPECT_EQ(buttons(*editor, "Cancel").size(), 1U);
  EXPECT_EQ(buttons(*editor, "Save").size(), 1U);
}

TEST_F(ActionEditorViewTest, ShowsTheActionThatIsEdited) {
  open(CustomAction::defaultExplainScreen());
  EXPECT_EQ(testing::texts(*editor).front(), "Edit Action");
  EXPECT_EQ(nameField().text(), QStringLiteral("Explain Screen Region"));
  EXPECT_EQ(promptArea().toPlainText().toStdString(), CustomAction::defaultExplainScreen().prompt);
  EXPECT_TRUE(button(*editor, "Screen Capture").isChecked());
  EXPECT_EQ(hotkey(), "⌥⇧S");
  EXPECT_TRUE(save().isEnabled());
}

TEST_F(ActionEditorViewTest, StandsFromTopToBottomInTheOrderOfItsParts) {
  open();
  const auto top = [this](const QWidget &widget) { return widget.mapTo(editor.get(), QPoint()).y(); };
  const std::vector<int> tops{top(nameField()), top(hotkeyBox()), top(button(*editor, "Text Selection")),
                              top(promptArea()), top(save())};
  EXPECT_TRUE(std::is_sorted(tops.begin(), tops.end()));
  EXPECT_EQ(top(hotkeyBox()), top(button(*editor, "Change")));
  EXPECT_EQ(top(button(*editor, "Text Selection")), top(button(*editor, "Screen Capture")));
  EXPECT_EQ(button(*editor, "Text Selection").width(), button(*editor, "Screen Capture").width());
}

TEST_F(ActionEditorViewTest, SavingAnUnchangedActionKeepsAllButThatItIsADefault) {
  auto action = CustomAction::defaultTranslate();
  action.prompt = "one\r\ntwo\u00a0three\u2028{text}";
  open(action);
  save().click();
  action.isDefault = false;
  EXPECT_THAT(saved, ElementsAre(action));
}

TEST_F(ActionEditorViewTest, EditingTranslateToEnglishYieldsTheSameIDAndNoDefault) {
  open(CustomAction::defaultTranslate());
  nameField().setText(QStringLiteral("Into English"));
  save().click();
  ASSERT_EQ(saved.size(), 1U);
  EXPECT_EQ(saved[0].id, CustomAction::translateID());
  EXPECT_EQ(saved[0].name, "Into English");
  EXPECT_FALSE(saved[0].isDefault);
}

TEST_F(ActionEditorViewTest, ANewActionHasAFreshIDAndWhatWasTyped) {
  open();
  testing::type(QStringLiteral("  A & <b>  "));
  promptArea().setFocus();
  testing::type(QStringLiteral("a\u00a0b"));
  press(Qt::Key_Return);
  press(Qt::Key_Return, Qt::ShiftModifier);
  testing::type(QStringLiteral("{text}"));
  button(*editor, "Screen Capture").click();
  save().click();
  save().click();
  ASSERT_EQ(saved.size(), 2U);
  EXPECT_NE(saved[0].id, saved[1].id);
  saved[0].id = {};
  EXPECT_EQ(
      saved[0],
      (CustomAction{
          {}, "  A & <b>  ", {18, optionShift}, "a\u00a0b\n\n{text}", InputType::ScreenCapture, false}));
}

TEST_F(ActionEditorViewTest, AnEmptyNameBecomesUntitledAction) {
  open();
  promptArea().setPlainText(QStringLiteral("p"));
  save().click();
  nameField().setText(QStringLiteral(" "));
  save().click();
  ASSERT_EQ(saved.size(), 2U);
  EXPECT_EQ(saved[0].name, "Untitled Action");
  EXPECT_EQ(saved[1].name, " ");
}

TEST_F(ActionEditorViewTest, AnEmptyPromptCannotBeSavedABlankOneCan) {
  open(CustomAction::defaultTranslate());
  promptArea().clear();
  EXPECT_FALSE(save().isEnabled());
  save().click();
  nameField().setFocus();
  press(Qt::Key_Return);
  EXPECT_TRUE(saved.empty());
  promptArea().setPlainText(QStringLiteral(" "));
  EXPECT_TRUE(save().isEnabled());
  save().click();
  EXPECT_EQ(saved.at(0).prompt, " ");
}

TEST_F(ActionEditorViewTest, ANameOfAnyLengthIsKept) {
  auto action = CustomAction::defaultTranslate();
  action.name = std::string(100'000, 'n');
  open(action);
  save().click();
  EXPECT_EQ(saved.at(0).name.size(), 100'000U);
}

TEST_F(ActionEditorViewTest, WhatIsPastedIntoTheNameStaysOnOneLine) {
  open();
  nameField().setText(QStringLiteral("ad"));
  nameField().setCursorPosition(1);
  nameField().insert(QStringLiteral("b\r\nc"));
  EXPECT_EQ(nameField().text(), QStringLiteral("ab  cd"));
  EXPECT_EQ(nameField().cursorPosition(), 5);
}

TEST_F(ActionEditorViewTest, ANameThatIsNotChangedKeepsItsLines) {
  auto action = CustomAction::defaultTranslate();
  action.name = "One\ntwo";
  open(action);
  save().click();
  EXPECT_EQ(saved.at(0).name, "One\ntwo");
}

TEST_F(ActionEditorViewTest, TheHotkeyIsNotCheckedAgainstOtherActions) {
  manager.addAction(action("other"));
  open();
  button(*editor, "Change").click();
  pressKeys(keyCode::e, optionShift);  // That of "Explain Selected Text".
  hotkeyButton("Save").click();
  promptArea().setPlainText(QStringLiteral("p"));
  save().click();
  EXPECT_EQ(saved.at(0).hotkey, CustomAction::defaultExplainText().hotkey);
}

TEST_F(ActionEditorViewTest, RecordingShowsPressKeysAndThenWhatIsPressed) {
  open();
  EXPECT_EQ(monitors.localMonitorCount(), 0U);
  button(*editor, "Change").click();
  EXPECT_EQ(hotkey(), "Press keys...");
  EXPECT_TRUE(buttons(*editor, "Change").empty());
  EXPECT_EQ(buttons(*editor, "Save").size(), 1U);  // That of the form.
  EXPECT_EQ(buttons(*editor, "Cancel").size(), 2U);

  EXPECT_EQ(pressKeys(40, optionShift), LocalEventResult::Consume);
  EXPECT_EQ(hotkey(), "⌥⇧K");
  EXPECT_EQ(buttons(*editor, "Save").size(), 2U);

  pressKeys(96, modifier::option);
  EXPECT_EQ(hotkey(), "⌥?");
}

TEST_F(ActionEditorViewTest, TheHotkeyIsSecondaryWhileItIsRecorded) {
  open();
  const SemanticColors colors(editor->palette());
  EXPECT_EQ(inkOf(hotkeyBox()), colors.primary.rgb());
  button(*editor, "Change").click();
  EXPECT_EQ(inkOf(hotkeyBox()), colors.secondary.rgb());
  pressKeys(40, optionShift);
  EXPECT_EQ(inkOf(hotkeyBox()), colors.secondary.rgb());
  hotkeyButton("Cancel").click();
  EXPECT_EQ(inkOf(hotkeyBox()), colors.primary.rgb());
}

TEST_F(ActionEditorViewTest, SaveOfTheHotkeyTakesWhatWasRecorded) {
  open(CustomAction::defaultTranslate());
  button(*editor, "Change").click();
  pressKeys(40, optionShift);
  hotkeyButton("Save").click();
  EXPECT_EQ(hotkey(), "⌥⇧K");
  EXPECT_TRUE(button(*editor, "Change").isVisible());
  EXPECT_EQ(monitors.localMonitorCount(), 0U);
  EXPECT_TRUE(saved.empty());
  save().click();
  EXPECT_EQ(saved.at(0).hotkey, (CustomAction::HotkeyCombo{40, 0xA0000}));
}

TEST_F(ActionEditorViewTest, CancelOfTheHotkeyLeavesItAsItWas) {
  open(CustomAction::defaultTranslate());
  button(*editor, "Change").click();
  pressKeys(40, optionShift);
  hotkeyButton("Cancel").click();
  EXPECT_EQ(hotkey(), "⌥⇧T");
  EXPECT_EQ(monitors.localMonitorCount(), 0U);
  EXPECT_EQ(cancelled, 0);
  button(*editor, "Change").click();
  EXPECT_EQ(hotkey(), "Press keys...");
}

TEST_F(ActionEditorViewTest, SavingTheActionWhileRecordingKeepsTheHotkeyThatWasSavedBefore) {
  open(CustomAction::defaultTranslate());
  button(*editor, "Change").click();
  pressKeys(40, optionShift);
  save().click();
  EXPECT_EQ(saved.at(0).hotkey, CustomAction::defaultTranslate().hotkey);
}

TEST_F(ActionEditorViewTest, EscapeEndsTheRecordingAndNothingElse) {
  open();
  button(*editor, "Change").click();
  press(Qt::Key_Escape);
  EXPECT_EQ(hotkey(), "⌥⇧1");
  EXPECT_EQ(cancelled, 0);
}

TEST_F(ActionEditorViewTest, LeavingTheEditorEndsTheRecording) {
  open();
  button(*editor, "Change").click();
  EXPECT_EQ(monitors.localMonitorCount(), 1U);
  editor->hide();
  EXPECT_EQ(monitors.localMonitorCount(), 0U);
  editor->show();
  button(*editor, "Change").click();
  EXPECT_EQ(monitors.localMonitorCount(), 1U);
  editor.reset();
  EXPECT_EQ(monitors.localMonitorCount(), 0U);
}

TEST_F(ActionEditorViewTest, TheKeyboardStaysWithTheHotkeyWhileItIsRecorded) {
  open();
  button(*editor, "Change").setFocus();
  press(Qt::Key_Return);
  EXPECT_TRUE(hotkeyButton("Cancel").hasFocus());
  pressKeys(40, optionShift);
  EXPECT_TRUE(hotkeyButton("Save").hasFocus());
  press(Qt::Key_Space);
  EXPECT_EQ(hotkey(), "⌥⇧K");
  EXPECT_TRUE(button(*editor, "Change").hasFocus());
}

TEST_F(ActionEditorViewTest, TheNameKeepsTheKeyboardWhileTheHotkeyIsRecordedByMouse) {
  open();
  EXPECT_TRUE(nameField().hasFocus());
  button(*editor, "Change").click();
  pressKeys(40, optionShift);
  EXPECT_TRUE(nameField().hasFocus());
}

TEST_F(ActionEditorViewTest, ReturnInTheNameSavesIfThereIsAPrompt) {
  open();
  press(Qt::Key_Return);
  EXPECT_TRUE(saved.empty());
  promptArea().setPlainText(QStringLiteral("p"));
  press(Qt::Key_Return);
  EXPECT_EQ(saved.size(), 1U);
}

TEST_F(ActionEditorViewTest, ReturnPressesTheButtonThatHasTheKeyboard) {
  open(CustomAction::defaultTranslate());
  cancel().setFocus();
  press(Qt::Key_Return);
  EXPECT_EQ(cancelled, 1);
  EXPECT_TRUE(saved.empty());
}

TEST_F(ActionEditorViewTest, ArrowsChooseTheInput) {
  open();
  button(*editor, "Text Selection").setFocus();
  press(Qt::Key_Right);
  EXPECT_TRUE(button(*editor, "Screen Capture").isChecked());
  promptArea().setPlainText(QStringLiteral("p"));
  save().click();
  EXPECT_EQ(saved.at(0).inputType, InputType::ScreenCapture);
}

TEST_F(ActionEditorViewTest, ATileIsPressedAnywhereInIt) {
  open();
  auto &tile = button(*editor, "Screen Capture");
  const QPoint corner(tile.width() - 3, 3);
  for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
    QMouseEvent event(type, corner, tile.mapToGlobal(corner), Qt::LeftButton,
                      type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(&tile, &event);
  }
  EXPECT_TRUE(tile.isChecked());
}

TEST_F(ActionEditorViewTest, AssistiveTechnologyKnowsEveryControl) {
  open();
  const auto describe = [](QWidget &widget) {
    auto *const seen = QAccessible::queryAccessibleInterface(&widget);
    return std::pair(seen->role(), seen->text(QAccessible::Name).toStdString());
  };
  EXPECT_EQ(describe(nameField()), std::pair(QAccessible::EditableText, std::string("Name")));
  EXPECT_EQ(describe(promptArea()), std::pair(QAccessible::EditableText, std::string("Prompt")));
  EXPECT_EQ(describe(hotkeyBox()), std::pair(QAccessible::StaticText, std::string("⌥⇧1")));
  EXPECT_EQ(describe(button(*editor, "Change")), std::pair(QAccessible::Button, std::string("Change")));
  EXPECT_EQ(describe(button(*editor, "Screen Capture")),
            std::pair(QAccessible::RadioButton, std::string("Screen Capture")));
}

}  // namespace
}  // namespace lumiwren
