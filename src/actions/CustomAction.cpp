#include "actions/CustomAction.h"

#include "platform/KeyCodes.h"

namespace lumiwren {

namespace {

using namespace std::string_view_literals;

// The names of key codes 0 to 126; empty for a key without one. The gaps are those of the stored numbering.
constexpr std::array keyNames = std::to_array<std::string_view>({
    "A", "S", "D",  "F", "H", "G", "Z", "X", "C", "V",  // 0
    "",  "B", "Q",  "W", "E", "R", "Y", "T", "1", "2",  // 10
    "3", "4", "6",  "5", "=", "9", "7", "-", "8", "0",  // 20
    "]", "O", "U",  "[", "I", "P", "⏎", "L", "J", "'",  // 30
    "K", ";", "\\", ",", "/", "N", "M", ".", "⇥", "␣",  // 40
    "`", "⌫", "",   "⎋", "",  "",  "",  "",  "",  "",   // 50
    "",  "",  "",   "",  "",  "",  "",  "",  "",  "",   // 60
    "",  "",  "",   "",  "",  "",  "",  "",  "",  "",   // 70
    "",  "",  "",   "",  "",  "",  "",  "",  "",  "",   // 80
    "",  "",  "",   "",  "",  "",  "",  "",  "",  "",   // 90
    "",  "",  "",   "",  "",  "",  "",  "",  "",  "",   // 100
    "",  "",  "",   "",  "",  "",  "",  "",  "",  "",   // 110
    "",  "",  "",   "←", "→", "↓", "↑",                 // 120
});

constexpr std::string_view explainPrompt =
    "Explain the following text concisely. If it's a word or phrase, give the definition and usage. "
    "If it's a sentence or paragraph, explain the meaning. If it's code, explain what it does. "
    "If it's in a foreign language, translate it and explain. For short foreign language text (words or "
    "short phrases), also include English phonetics showing how to pronounce it.\n\nText: {text}";

constexpr std::string_view translatePrompt =
    "Translate the following text to English. Only provide the translation, nothing else. "
    "No explanations, no notes, just the translated text.\n\nText: {text}";

UUID defaultID(std::uint8_t number) {
  UUID id;
  id.bytes.back() = number;
  return id;
}

CustomAction defaultAction(const UUID &id, std::string_view name, std::uint16_t key, std::string_view prompt,
                           CustomAction::InputType inputType) {
  return {.id = id,
          .name = std::string(name),
          .hotkey = {.keyCode = key, .modifiers = modifier::option | modifier::shift},
          .prompt = std::string(prompt),
          .inputType = inputType,
          .isDefault = true};
}

}  // namespace

std::string CustomAction::HotkeyCombo::displayString() const {
  std::string text;
  for (const auto &[bit, symbol] : {std::pair(modifier::control, "⌃"sv), std::pair(modifier::option, "⌥"sv),
                                    std::pair(modifier::shift, "⇧"sv), std::pair(modifier::command, "⌘"sv)}) {
    if ((modifiers & bit) != 0) {
      text += symbol;
    }
  }
  text += keyCodeToString(keyCode);
  return text;
}

std::string_view CustomAction::HotkeyCombo::keyCodeToString(std::uint16_t keyCode) {
  const auto name = keyCode < keyNames.size() ? keyNames.at(keyCode) : ""sv;
  return name.empty() ? "?"sv : name;
}

std::string_view CustomAction::rawValue(InputType type) {
  return type == InputType::TextSelection ? "Text Selection"sv : "Screen Capture (OCR)"sv;
}

std::optional<CustomAction::InputType> CustomAction::inputTypeFromRawValue(std::string_view rawValue) {
  for (const auto type : allInputTypes) {
    if (CustomAction::rawValue(type) == rawValue) {
      return type;
    }
  }
  return std::nullopt;
}

const UUID &CustomAction::explainTextID() {
  static const UUID id = defaultID(1);
  return id;
}

const UUID &CustomAction::explainScreenID() {
  static const UUID id = defaultID(2);
  return id;
}

const UUID &CustomAction::translateID() {
  static const UUID id = defaultID(3);
  return id;
}

const CustomAction &CustomAction::defaultExplainText() {
  static const CustomAction action = defaultAction(explainTextID(), "Explain Selected Text", keyCode::e,
                                                   explainPrompt, InputType::TextSelection);
  return action;
}

const CustomAction &CustomAction::defaultExplainScreen() {
  static const CustomAction action = defaultAction(explainScreenID(), "Explain Screen Region", 1 /* S */,
                                                   explainPrompt, InputType::ScreenCapture);
  return action;
}

const CustomAction &CustomAction::defaultTranslate() {
  static const CustomAction action = defaultAction(translateID(), "Translate to English", keyCode::t,
                                                   translatePrompt, InputType::TextSelection);
  return action;
}

}  // namespace lumiwren
