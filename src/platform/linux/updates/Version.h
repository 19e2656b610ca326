#pragma once

#include <compare>
#include <string_view>

namespace lumiwren {

/// Whether the text is a version: numbers with dots between them, perhaps a pre-release suffix ("-rc.1",
/// "b2", "~beta"), perhaps build information after a plus sign; 64 characters at the most. Any thread, as all
/// here.
bool isVersion(std::string_view text);

/// The order of two versions. Numbers count, not their digits: 1.9 < 1.10; missing ones are 0; a pre-release
/// comes before its release, and pre-releases are compared piece by piece, numbers before words. Build
/// information does not count. Both are versions in the sense of isVersion().
std::weak_ordering compareVersions(std::string_view one, std::string_view other);

}  // namespace lumiwren
