#pragma once

#include <stop_token>

namespace lumiwren {

/// Makes the application in front copy what is selected in it to the general pasteboard.
class SelectionCopy {
public:
  virtual ~SelectionCopy() = default;

  /// Lets go of the modifiers that the hotkey still holds down and posts the copy chord; no key stays down,
  /// also when the program ends in the middle. A terminal gets no keystroke, because the chord would
  /// interrupt the program that runs in it: its selection is put on the pasteboard instead, as temporary.
  /// Returns without waiting for the application's answer. Nothing is copied when there is nobody in front.
  /// Throws CancellationError when `token` is stopped. Not on the main thread.
  virtual void postCopy(const std::stop_token &token) = 0;
};

}  // namespace lumiwren
