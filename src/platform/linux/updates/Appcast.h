#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace lumiwren {

/// One version that a feed offers for this system.
struct AppcastItem {
  std::string version;               // as isVersion() wants it: the one that users see
  std::string minimumSystemVersion;  // empty where there is none
  std::string url;                   // of the package; whatever the feed says
  std::uint64_t length = 0;          // of the package in bytes; 0 where the feed does not say
  std::string edSignature;           // over the package, base64; empty where there is none
  std::string notes;                 // plain text
};

/// The feed is none. what() says why, in one line without what the feed contains.
class AppcastError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// The size of the longest feed that is read, in bytes.
constexpr std::size_t longestAppcast = 1'000'000;

/// The items of an RSS 2.0 feed with the elements and attributes of the namespace
/// "http://www.andymatuschak.org/xml-namespaces/sparkle", in their order. Left out are items without a
/// version or a package, those of a channel that one would have to ask for, and packages of other systems
/// (sparkle:os is not "linux"). A feed that is no well-formed XML, has a document type or is nested deeper
/// than a feed is, throws AppcastError. Any thread.
std::vector<AppcastItem> parseAppcast(std::string_view feed);

/// The newest of the items for which this system is new enough; empty when it is not newer than
/// `runningVersion`, a version.
std::optional<AppcastItem> newestUpdate(const std::vector<AppcastItem> &items,
                                        std::string_view runningVersion, std::string_view systemVersion);

}  // namespace lumiwren
