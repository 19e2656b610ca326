#include "support/FuzzTarget.h"

#include "base/Unicode.h"
#include "platform/linux/updates/Appcast.h"
#include "platform/linux/updates/ReleaseNotes.h"
#include "platform/linux/updates/Version.h"

#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  using namespace lumiwren;
  using lumiwren::testing::require;
  const std::string_view feed(reinterpret_cast<const char *>(data), size);
  try {
    for (const auto &item : parseAppcast(feed)) {
      require(isVersion(item.version), "an item has a version");
      require(!item.url.empty(), "an item has a package");
      require(unicode::isValidUTF8(item.notes), "notes are text");
      require(compareVersions(item.version, item.version) == 0, "a version is as new as itself");
    }
  } catch (const AppcastError &error) {
    const std::string_view reason = error.what();
    require(!reason.empty() && reason.find('\n') == std::string_view::npos, "a reason is one line");
  }
  require(unicode::isValidUTF8(plainReleaseNotes(feed)), "notes are text, whatever they are made from");
  return 0;
}
