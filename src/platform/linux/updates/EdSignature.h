#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace lumiwren {

/// The public half of the Ed25519 key (RFC 8032) that updates are signed with. Any thread.
class EdPublicKey {
public:
  /// Base64 of the 32 bytes; empty for everything else.
  static std::optional<EdPublicKey> fromBase64(std::string_view text);

  /// Whether `signature`, base64 of 64 bytes, was made with the key's other half over exactly these bytes.
  bool verifies(std::string_view bytes, std::string_view signature) const;

private:
  static constexpr std::size_t size = 32;

  explicit EdPublicKey(std::string_view bytes);

  std::array<unsigned char, size> bytes_;
};

}  // namespace lumiwren
