#include "platform/linux/XDGLoginItem.h"

#include "platform/linux/UserFolders.h"
#include "platform/linux/WholeFile.h"

#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

namespace lumiwren {
namespace {

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r";
  const auto begin = text.find_first_not_of(blanks);
  if (begin == std::string_view::npos) {
    return {};
  }
  return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

/// Whether a desktop starts a program for an autostart entry with this content.
bool startsProgram(const std::string &entry) {
  bool inGroup = false;
  bool hasCommand = false;
  std::istringstream lines(entry);
  for (std::string line; std::getline(lines, line);) {
    const auto text = trimmed(line);
    if (text.starts_with('[')) {
      inGroup = text == "[Desktop Entry]";
      continue;
    }
    const auto equals = text.find('=');
    if (!inGroup || equals == std::string_view::npos) {
      continue;
    }
    const auto key = trimmed(text.substr(0, equals));
    const auto value = trimmed(text.substr(equals + 1));
    hasCommand = hasCommand || (key == "Exec" && !value.empty());
    if ((key == "Hidden" && value == "true") || (key == "X-GNOME-Autostart-enabled" && value == "false")) {
      return false;
    }
  }
  return hasCommand;
}

/// As the value of a key that holds a string.
std::string stringValue(std::string_view text) {
  std::string value;
  for (const char each : text) {
    switch (each) {
      case '\\':
        value += "\\\\";
        break;
      case '\n':
        value += "\\n";
        break;
      case '\t':
        value += "\\t";
        break;
      case '\r':
        value += "\\r";
        break;
      default:
        value += each;
    }
  }
  return value;
}

}  // namespace

std::string execValue(const std::filesystem::path &executable) {
  std::string quoted = "\"";
  for (const char each : executable.string()) {
    if (std::string_view("\"`$\\").find(each) != std::string_view::npos) {
      quoted += '\\';
    }
    // "%" begins a field code, in quotes too.
    quoted += each == '%' ? "%%" : std::string(1, each);
  }
  return stringValue(quoted + '"');
}

std::filesystem::path XDGLoginItem::defaultFile() {
  return configurationFolder() / "autostart" / "lumiwren.desktop";
}

XDGLoginItem::XDGLoginItem(std::filesystem::path file, std::filesystem::path executable)
    : file_(std::move(file)), executable_(std::move(executable)) {}

LoginItem::Status XDGLoginItem::status() {
  try {
    return startsProgram(readWhole(file_, std::nullopt).content) ? Status::Enabled : Status::NotRegistered;
  } catch (const std::exception &) {
    return Status::NotRegistered;
  }
}

void XDGLoginItem::registerItem() {
  makeFolder(file_.parent_path());
  // TryExec: an entry that outlives the program does nothing.
  writeWhole(linkTarget(file_),
             "[Desktop Entry]\n"
             "Type=Application\n"
             "Name=Lumiwren\n"
             "Icon=lumiwren\n"
             "TryExec=" +
                 stringValue(executable_.string()) +
                 "\n"
                 "Exec=" +
                 execValue(executable_) +
                 "\n"
                 "Terminal=false\n"
                 "X-GNOME-Autostart-enabled=true\n");
}

void XDGLoginItem::unregisterItem() {
  std::error_code error;
  std::filesystem::remove(file_, error);
  if (error) {
    throw std::system_error(error);
  }
}

}  // namespace lumiwren
