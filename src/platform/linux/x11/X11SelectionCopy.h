#pragma once

#include "platform/SelectionCopy.h"
#include "platform/linux/x11/TerminalClasses.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11InputChannel.h"
#include "platform/linux/x11/X11KeyMap.h"

#include <cstdint>
#include <functional>
#include <stop_token>
#include <string>
#include <vector>

namespace lumiwren {

/// The strokes of a copy, given the keys that are down. Everything that is held is let go first, locks
/// excepted: a modifier would change the chord, and the hotkey's letter would begin to repeat without its
/// modifiers, that is, be typed over the selection.
KeyChord copyChord(const X11KeyMap &keyMap, const KeySet &heldKeys, std::uint32_t group,
                   std::uint8_t lockedModifiers, std::uint8_t latchedModifiers);

/// Copies by Ctrl+C, posted to whoever has the focus.
class X11SelectionCopy : public SelectionCopy {
public:
  /// Puts the text selected in the application that `window` belongs to on the pasteboard without its help.
  /// False when that application has nothing selected.
  using CopyPrimary = std::function<bool(std::uint32_t window, const std::stop_token &token)>;

  /// `terminalClasses` are window classes on top of those of the known terminal emulators. The connection and
  /// the channel outlive this object.
  X11SelectionCopy(const X11Connection &connection, X11InputChannel &channel, CopyPrimary copyPrimary,
                   const std::vector<std::string> &terminalClasses);

  void postCopy(const std::stop_token &token) override;

private:
  enum class Front { Nobody, Terminal, Application };
  Front front(xcb_window_t focus) const;
  void postChord(const std::stop_token &token);

  const X11Connection &connection_;
  X11InputChannel &channel_;
  const CopyPrimary copyPrimary_;
  const TerminalClasses terminals_;
};

}  // namespace lumiwren
