#include "actions/CustomAction.h"

#include "platform/KeyCodes.h"

#include <gtest/gtest.h>

#include <map>

namespace lumiwren {
namespace {

std::string shown(std::uint16_t key, std::uint64_t modifiers = 0) {
  return CustomAction::HotkeyCombo{.keyCode = key, .modifiers = modifiers}.displayString();
}

TEST(CustomActionTest, ShowsModifiersInTheOrderControlOptionShiftCommand) {
  EXPECT_EQ(shown(14, 0xA0000), "⌥⇧E");
  EXPECT_EQ(shown(49, 0x1E0000), "⌃⌥⇧⌘␣");
  EXPECT_EQ(shown(0, modifier::control), "⌃A");
  EXPECT_EQ(shown(0, modifier::option), "⌥A");
  EXPECT_EQ(shown(0, modifier::shift), "⇧A");
  EXPECT_EQ(shown(0, modifier::command), "⌘A");
  EXPECT_EQ(shown(0), "A");
}

TEST(CustomActionTest, ShowsNothingOfOtherModifierBits) {
  EXPECT_EQ(shown(0, ~modifier::hotkeyMask), "A");
  EXPECT_EQ(shown(0, ~std::uint64_t{0}), "⌃⌥⇧⌘A");
}

TEST(CustomActionTest, NamesEveryKeyOfTheTableAndNoOther) {
  const std::map<int, std::string> names{
      {0, "A"},  {1, "S"},   {2, "D"},  {3, "F"},  {4, "H"},   {5, "G"},   {6, "Z"},   {7, "X"},
      {8, "C"},  {9, "V"},   {11, "B"}, {12, "Q"}, {13, "W"},  {14, "E"},  {15, "R"},  {16, "Y"},
      {17, "T"}, {18, "1"},  {19, "2"}, {20, "3"}, {21, "4"},  {22, "6"},  {23, "5"},  {24, "="},
      {25, "9"}, {26, "7"},  {27, "-"}, {28, "8"}, {29, "0"},  {30, "]"},  {31, "O"},  {32, "U"},
      {33, "["}, {34, "I"},  {35, "P"}, {36, "⏎"}, {37, "L"},  {38, "J"},  {39, "'"},  {40, "K"},
      {41, ";"}, {42, "\\"}, {43, ","}, {44, "/"}, {45, "N"},  {46, "M"},  {47, "."},  {48, "⇥"},
      {49, "␣"}, {50, "`"},  {51, "⌫"}, {53, "⎋"}, {123, "←"}, {124, "→"}, {125, "↓"}, {126, "↑"},
  };
  EXPECT_EQ(names.size(), 56U);
  for (int key = 0; key <= 0xFFFF; ++key) {
    const auto name = names.find(key);
    ASSERT_EQ(shown(static_cast<std::uint16_t>(key)), name != names.end() ? name->second : "?") << key;
  }
}

TEST(CustomActionTest, ShowsTheModifiersOfAKeyWithoutAName) {
  EXPECT_EQ(shown(122, modifier::command), "⌘?");
}

TEST(CustomActionTest, HasTwoInputTypesByTheirTitles) {
  using InputType = CustomAction::InputType;
  EXPECT_EQ(CustomAction::allInputTypes, (std::array{InputType::TextSelection, InputType::ScreenCapture}));
  EXPECT_EQ(CustomAction::rawValue(InputType::TextSelection), "Text Selection");
  EXPECT_EQ(CustomAction::rawValue(InputType::ScreenCapture), "Screen Capture (OCR)");
  for (const auto type : CustomAction::allInputTypes) {
    EXPECT_EQ(CustomAction::inputTypeFromRawValue(CustomAction::rawValue(type)), type);
  }
  for (const auto *other : {"", "textSelection", "screenCapture", "text selection", "Text Selection "}) {
    EXPECT_FALSE(CustomAction::inputTypeFromRawValue(other)) << other;
  }
}

TEST(CustomActionTest, HasThreeDefaultsWithFixedValues) {
  const std::string explain =
      "Explain the following text concisely. If it's a word or phrase, give the definition and usage. If "
      "it's a "
      "sentence or paragraph, explain the meaning. If it's code, explain what it does. If it's in a foreign "
      "language, translate it and explain. For short foreign language text (words or short phrases), also "
      "include English phonetics showing how to pronounce it.\n\nText: {text}";
  const std::string translate =
      "Translate the following text to English. Only provide the translation, nothing else. No explanations, "
      "no "
      "notes, just the translated text.\n\nText: {text}";
  const auto expectDefault = [](const CustomAction &action, const char *id, const char *name,
                                const char *hotkey, const std::string &prompt, CustomAction::InputType type) {
    EXPECT_EQ(action.id.toString(), id);
    EXPECT_EQ(action.name, name);
    EXPECT_EQ(action.hotkey.displayString(), hotkey);
    EXPECT_EQ(action.hotkey.modifiers, 0xA0000U);
    EXPECT_EQ(action.prompt, prompt);
    EXPECT_EQ(action.inputType, type);
    EXPECT_TRUE(action.isDefault);
  };
  expectDefault(CustomAction::defaultExplainText(), "00000000-0000-0000-0000-000000000001",
                "Explain Selected Text", "⌥⇧E", explain, CustomAction::InputType::TextSelection);
  expectDefault(CustomAction::defaultExplainScreen(), "00000000-0000-0000-0000-000000000002",
                "Explain Screen Region", "⌥⇧S", explain, CustomAction::InputType::ScreenCapture);
  expectDefault(CustomAction::defaultTranslate(), "00000000-0000-0000-0000-000000000003",
                "Translate to English", "⌥⇧T", translate, CustomAction::InputType::TextSelection);
  EXPECT_EQ(CustomAction::defaultExplainText().id, CustomAction::explainTextID());
  EXPECT_EQ(CustomAction::defaultExplainScreen().id, CustomAction::explainScreenID());
  EXPECT_EQ(CustomAction::defaultTranslate().id, CustomAction::translateID());
}

TEST(CustomActionTest, EqualityComparesEveryField) {
  const auto original = CustomAction::defaultTranslate();
  EXPECT_EQ(original, CustomAction(original));
  const auto differs = [&](auto change) {
    auto changed = original;
    change(changed);
    return changed != original;
  };
  EXPECT_TRUE(differs([](auto &action) { action.id = CustomAction::explainTextID(); }));
  EXPECT_TRUE(differs([](auto &action) { action.name = "Other"; }));
  EXPECT_TRUE(differs([](auto &action) { action.hotkey.keyCode = 0; }));
  EXPECT_TRUE(differs([](auto &action) { action.hotkey.modifiers = 0; }));
  EXPECT_TRUE(differs([](auto &action) { action.prompt = "Other"; }));
  EXPECT_TRUE(differs([](auto &action) { action.inputType = CustomAction::InputType::ScreenCapture; }));
  EXPECT_TRUE(differs([](auto &action) { action.isDefault = false; }));
}

}  // namespace
}  // namespace lumiwren
