#include "platform/linux/updates/EdSignature.h"

#include "base/Base64.h"

#include <sodium.h>

#include <algorithm>

namespace lumiwren {
namespace {

const unsigned char *unsignedBytes(std::string_view bytes) {
  return reinterpret_cast<const unsigned char *>(bytes.data());
}

}  // namespace

EdPublicKey::EdPublicKey(std::string_view bytes) {
  static_assert(size == crypto_sign_ed25519_PUBLICKEYBYTES);
  std::copy_n(unsignedBytes(bytes), size, bytes_.begin());
}

std::optional<EdPublicKey> EdPublicKey::fromBase64(std::string_view text) {
  const auto bytes = decodeBase64(text);
  return bytes && bytes->size() == size ? std::optional(EdPublicKey(*bytes)) : std::nullopt;
}

bool EdPublicKey::verifies(std::string_view bytes, std::string_view signature) const {
  static const bool isReady = sodium_init() >= 0;
  const auto decoded = decodeBase64(signature);
  return isReady && decoded && decoded->size() == crypto_sign_ed25519_BYTES &&
         crypto_sign_ed25519_verify_detached(unsignedBytes(*decoded), unsignedBytes(bytes), bytes.size(),
                                             bytes_.data()) == 0;
}

}  // namespace lumiwren
