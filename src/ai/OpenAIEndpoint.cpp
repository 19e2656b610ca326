#include "ai/OpenAIEndpoint.h"

#include "base/ASCII.h"
#include "base/Unicode.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace lumiwren {

namespace {

/// The value itself stays out of the text: it may hold a password.
[[noreturn]] void refuse(const std::string &why) {
  throw std::invalid_argument("OPENAI_BASE_URL cannot be used: " + why);
}

bool isLoopback(const std::string &host, bool isIPv6) {
  if (isIPv6) {
    in6_addr address{};
    return inet_pton(AF_INET6, host.c_str(), &address) == 1 && IN6_IS_ADDR_LOOPBACK(&address);
  }
  std::array<unsigned char, 4> address{};
  return unicode::toLower(host) == "localhost" ||
         (inet_pton(AF_INET, host.c_str(), address.data()) == 1 && address[0] == 127);
}

bool isHostCharacter(char character) {
  return ascii::isAlphanumeric(character) || character == '-' || character == '.' || character == '_';
}

bool isPort(std::string_view text) {
  return !text.empty() && text.size() <= 5 && std::all_of(text.begin(), text.end(), ascii::isDigit) &&
         std::atoi(std::string(text).c_str()) <= 65535;
}

/// Only what every reader of a URL takes apart in the same way is let through, so that the host judged here
/// is the host that is contacted.
void checkBaseURL(std::string_view url) {
  const bool isPlain = std::all_of(url.begin(), url.end(), [](char c) {
    return c > ' ' && c < '\x7F' && c != '\\' && c != '"' && c != '<' && c != '>';
  });
  if (!isPlain || url.find_first_of("?#") != std::string_view::npos) {
    refuse("it holds characters that do not belong there.");
  }
  const auto schemeEnd = url.find("://");
  const auto scheme = unicode::toLower(url.substr(0, schemeEnd));
  if (schemeEnd == std::string_view::npos || (scheme != "https" && scheme != "http")) {
    refuse("it has to begin with \"https://\".");
  }
  url.remove_prefix(schemeEnd + 3);
  auto authority = url.substr(0, url.find('/'));
  if (authority.find('@') != std::string_view::npos) {
    refuse("it must not hold a user name or password.");
  }
  const bool isIPv6 = authority.starts_with('[');
  std::string host;
  if (isIPv6) {
    const auto end = std::min(authority.find(']'), authority.size());
    host = authority.substr(1, end - 1);
    in6_addr address{};
    if (end == authority.size() || inet_pton(AF_INET6, host.c_str(), &address) != 1) {
      refuse("its host is not valid.");
    }
    authority.remove_prefix(end + 1);
  } else {
    const auto end = std::min(authority.find(':'), authority.size());
    host = authority.substr(0, end);
    if (host.empty() || !std::all_of(host.begin(), host.end(), isHostCharacter)) {
      refuse("its host is not valid.");
    }
    authority.remove_prefix(end);
  }
  if (!authority.empty() && (authority.front() != ':' || !isPort(authority.substr(1)))) {
    refuse("its port is not valid.");
  }
  if (scheme == "http" && !isLoopback(host, isIPv6)) {
    refuse("without encryption only this computer may be asked (localhost, 127.0.0.0/8 or [::1]).");
  }
}

std::string environment(const char *name) {
  const char *const value = std::getenv(name);
  return value == nullptr ? std::string() : value;
}

}  // namespace

OpenAIEndpoint OpenAIEndpoint::fromEnvironment() {
  OpenAIEndpoint endpoint;
  if (auto url = environment("OPENAI_BASE_URL"); !url.empty()) {
    checkBaseURL(url);
    if (url.ends_with('/')) {
      url.pop_back();
    }
    endpoint.baseURL = url + "/chat/completions";
  }
  if (auto model = environment("OPENAI_MODEL"); !model.empty()) {
    endpoint.model = std::move(model);
  }
  return endpoint;
}

}  // namespace lumiwren
