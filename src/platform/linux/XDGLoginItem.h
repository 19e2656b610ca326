#pragma once

#include "platform/LoginItem.h"

#include <filesystem>
#include <string>

namespace lumiwren {

/// An entry in the user's autostart folder, as desktops read it: the item is enabled when the entry is there,
/// is not hidden, and has not been switched off in a settings program.
class XDGLoginItem : public LoginItem {
public:
  /// "autostart/lumiwren.desktop" in the user's configuration folder.
  static std::filesystem::path defaultFile();

  /// `executable` is what logging in is to start.
  XDGLoginItem(std::filesystem::path file, std::filesystem::path executable);

  Status status() override;
  void registerItem() override;
  void unregisterItem() override;

private:
  const std::filesystem::path file_;
  const std::filesystem::path executable_;
};

/// A program's path as the value of a desktop entry's key Exec has it: quoted, and escaped once for the
/// quotes and once for the file.
std::string execValue(const std::filesystem::path &executable);

}  // namespace lumiwren
