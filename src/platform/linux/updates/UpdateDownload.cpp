#include "platform/linux/updates/UpdateDownload.h"

#include "base/Task.h"

#include <strings.h>

#include <algorithm>
#include <system_error>

namespace lumiwren {
namespace {

/// Hands the body of a successful answer to `take`, piece by piece. Throws TransportError.
template <typename Take>
void fetch(HTTPClient &http, const std::string &url, const std::stop_token &token, Take take) {
  const auto response = http.send(
      {.method = "GET", .url = url, .headers = {}, .body = {}, .redirects = Redirects::HTTPSOnly}, token);
  if (response->status() != 200) {
    throw UpdateError("The server answered with status " + std::to_string(response->status()) + ".");
  }
  for (auto piece = response->read(token); !piece.empty(); piece = response->read(token)) {
    take(piece);
  }
}

std::unique_ptr<PrivateFile> download(HTTPClient &http, const AppcastItem &item, const EdPublicKey &key,
                                      const PrivateFolder &folder,
                                      const std::function<void(std::uint64_t)> &progress,
                                      const std::stop_token &token) {
  constexpr std::uint64_t steps = 200;
  const auto limit = item.length != 0 ? item.length : largestPackage;
  const auto step = std::max<std::uint64_t>(limit / steps, 1);
  auto file = folder.makeFile("lumiwren-" + item.version + ".deb");
  std::uint64_t received = 0;
  fetch(http, item.url, token, [&](std::string_view piece) {
    if (piece.size() > limit - received) {
      throw UpdateError("The download is larger than announced, so it was stopped.");
    }
    file->write(piece);
    const auto before = received / step;
    received += piece.size();
    if (received / step != before) {
      progress(received);
    }
  });
  if (item.length != 0 && received != item.length) {
    throw UpdateError("The download is not complete.");
  }
  throwIfStopped(token);
  if (!key.verifies(MappedFile(file->path()).bytes(), item.edSignature)) {
    throw UpdateError("The update is not signed by the makers of Lumiwren, so it was not used.");
  }
  return file;
}

}  // namespace

bool isHTTPSAddress(std::string_view url) {
  constexpr std::string_view scheme = "https://";
  return url.size() > scheme.size() && ::strncasecmp(url.data(), scheme.data(), scheme.size()) == 0;
}

std::vector<AppcastItem> loadAppcast(HTTPClient &http, const std::string &url, const std::stop_token &token) {
  try {
    std::string feed;
    fetch(http, url, token, [&feed](std::string_view piece) {
      if (piece.size() > longestAppcast - feed.size()) {
        throw AppcastError("it is too long");
      }
      feed.append(piece);
    });
    return parseAppcast(feed);
  } catch (const AppcastError &error) {
    throw UpdateError(std::string("The list of new versions cannot be read: ") + error.what() + ".");
  } catch (const TransportError &error) {
    throw UpdateError(error.what());
  }
}

void requireUsable(const AppcastItem &item) {
  if (item.edSignature.empty()) {
    throw UpdateError("The update is not signed, so it is not used.");
  }
  if (!isHTTPSAddress(item.url)) {
    throw UpdateError("The update is not offered over an encrypted connection, so it is not used.");
  }
  if (item.length > largestPackage) {
    throw UpdateError("The update is too large, so it is not used.");
  }
}

std::unique_ptr<PrivateFile> downloadPackage(HTTPClient &http, const AppcastItem &item,
                                             const EdPublicKey &key, const PrivateFolder &folder,
                                             const std::function<void(std::uint64_t)> &progress,
                                             const std::stop_token &token) {
  requireUsable(item);
  try {
    return download(http, item, key, folder, progress, token);
  } catch (const TransportError &error) {
    throw UpdateError(error.what());
  } catch (const std::system_error &error) {
    throw UpdateError("The update cannot be saved: " + error.code().message() + ".");
  }
}

}  // namespace lumiwren
