#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace lumiwren {

/// An entry of the status item's menu, however the desktop shows it.
struct MenuEntry {
  int id = 0;     // above 0, unique in its menu; stays with an entry for as long as it means the same
  QString label;  // plain text
  std::function<void()> action;
  bool enabled = true;
  bool separator = false;            // a line; of the other members only the id counts
  std::optional<bool> checked = {};  // no check mark, not even an empty one, without a value

  bool looksLike(const MenuEntry &other) const {
    return id == other.id && label == other.label && enabled == other.enabled &&
           separator == other.separator && checked == other.checked;
  }
};

}  // namespace lumiwren
