#pragma once

class QKeyEvent;

namespace lumiwren {

/// Whether a key that was pressed is meant for somebody else than the field that has the keyboard: the
/// toolkit's fields type a letter also while Alt or Super is down, over what is selected in them.
bool isHotkeyPress(const QKeyEvent &event);

}  // namespace lumiwren
