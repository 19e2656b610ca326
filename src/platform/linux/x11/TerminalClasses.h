#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace lumiwren {

/// The window classes of terminal emulators. In a terminal the copy chord would interrupt the program that
/// runs in it.
class TerminalClasses {
public:
  /// `more` are classes that the user names, on top of the known ones.
  explicit TerminalClasses(const std::vector<std::string> &more);

  /// `windowClass` is the value of a WM_CLASS property: instance and class, each ended by a NUL. Upper and
  /// lower case are the same.
  bool contains(std::string_view windowClass) const;

private:
  std::set<std::string, std::less<>> classes_;
};

}  // namespace lumiwren
