#pragma once

#include "platform/HTTPClient.h"
#include "platform/linux/updates/Appcast.h"
#include "platform/linux/updates/EdSignature.h"
#include "platform/linux/updates/PrivateFolder.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace lumiwren {

/// An update that cannot be had, or must not be used. what() is a sentence for the user.
class UpdateError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// The size of the largest package that is downloaded, in bytes.
constexpr std::uint64_t largestPackage = 200'000'000;

bool isHTTPSAddress(std::string_view url);

/// The feed at an https address. Waits for the network; throws UpdateError, and CancellationError as soon as
/// `token` is stopped.
std::vector<AppcastItem> loadAppcast(HTTPClient &http, const std::string &url, const std::stop_token &token);

/// Throws UpdateError for an item whose package would be refused unseen: not signed, not encrypted on its
/// way, or too large.
void requireUsable(const AppcastItem &item);

/// The item's package, whole and signed with the key; nothing has looked into it before its signature was
/// checked. Throws as loadAppcast() does, and then nothing is left on disk. `progress` is told of the bytes
/// received, 200 times at the most.
std::unique_ptr<PrivateFile> downloadPackage(HTTPClient &http, const AppcastItem &item,
                                             const EdPublicKey &key, const PrivateFolder &folder,
                                             const std::function<void(std::uint64_t)> &progress,
                                             const std::stop_token &token);

}  // namespace lumiwren
