#pragma once

#include "base/UUID.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace lumiwren {

/// A named prompt, the input that fills it, and the keys that fire it.
struct CustomAction {
  /// One physical key with modifiers, in the numbering of platform/KeyCodes.h.
  struct HotkeyCombo {
    std::uint16_t keyCode = 0;
    std::uint64_t modifiers = 0;

    /// As it is shown to the user, for example "⌥⇧E".
    std::string displayString() const;
    friend bool operator==(const HotkeyCombo &, const HotkeyCombo &) = default;

  private:
    static std::string_view keyCodeToString(std::uint16_t keyCode);
  };

  enum class InputType { TextSelection, ScreenCapture };
  static constexpr std::array allInputTypes{InputType::TextSelection, InputType::ScreenCapture};
  /// The stored form of an input type, which is also its title.
  static std::string_view rawValue(InputType type);
  static std::optional<InputType> inputTypeFromRawValue(std::string_view rawValue);

  UUID id;
  std::string name;
  HotkeyCombo hotkey;
  std::string prompt;  // "{text}" marks where the input goes
  InputType inputType = InputType::TextSelection;
  bool isDefault = false;

  static const UUID &explainTextID();
  static const UUID &explainScreenID();
  static const UUID &translateID();
  static const CustomAction &defaultExplainText();
  static const CustomAction &defaultExplainScreen();
  static const CustomAction &defaultTranslate();

  friend bool operator==(const CustomAction &, const CustomAction &) = default;
};

}  // namespace lumiwren
