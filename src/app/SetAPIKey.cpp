#include "app/SetAPIKey.h"

#include "ai/KeychainManager.h"
#include "base/Handle.h"
#include "base/Secret.h"
#include "base/Unicode.h"
#include "platform/linux/session/LinuxPlatform.h"

#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

namespace lumiwren {
namespace {

/// Longer than any key, so that a mistaken pipe does not end up in the keyring.
constexpr std::size_t longestKey = 4096;

Handle hideTyping() {
  termios before{};
  if (tcgetattr(STDIN_FILENO, &before) != 0) {
    return {};
  }
  termios hidden = before;
  hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
  tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
  std::fputs("API key: ", stderr);
  return Handle([before] {
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &before);
    std::fputs("\n", stderr);
  });
}

Secret readLine() {
  const Handle hidden = hideTyping();
  std::string line;
  line.reserve(longestKey + 1);  // never moved, so that no copy stays behind
  char character = 0;
  // Byte by byte and without stdio, whose buffer would keep the key.
  while (line.size() <= longestKey && read(STDIN_FILENO, &character, 1) == 1 && character != '\n') {
    line.push_back(character);
  }
  return Secret(std::move(line));
}

}  // namespace

int setAPIKey() {
  const Secret line = readLine();
  const std::string_view key = unicode::trimWhitespace(line.reveal());
  if (key.empty()) {
    throw std::runtime_error("no API key on standard input");
  }
  if (key.size() > longestKey) {
    throw std::runtime_error("what is on standard input is too long for an API key");
  }
  const std::unique_ptr<SecretStore> store = makeSecretStore();
  if (!KeychainManager(*store).saveAPIKey(Secret::copyOf(key))) {
    throw std::runtime_error(
        "the keyring did not store the API key; is a Secret Service running and unlocked?");
  }
  return EXIT_SUCCESS;
}

}  // namespace lumiwren
