#include "crypto/ed25519.h"

#include <sodium.h>

namespace crypto {

namespace {

// L = 2^252 + 27742317777372353535851937790883648493, little-endian.
constexpr std::array<std::uint8_t, 32> kGroupOrder = {
    0xed, 0xd3, 0xf5, 0x5c, 0x1a, 0x63, 0x12, 0x58, 0xd6, 0x9c, 0xf7, 0xa2, 0xde, 0xf9, 0xde, 0x14,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x10,
};

// sodium_init is itself idempotent; the static makes the first call race-free.
bool SodiumReady() {
  static const bool ready = sodium_init() >= 0;
  return ready;
}

}  // namespace

bool IsCanonicalEd25519Scalar(std::span<const std::uint8_t, 32> scalar) {
  for (std::size_t i = scalar.size(); i-- > 0;) {
    if (scalar[i] != kGroupOrder[i]) return scalar[i] < kGroupOrder[i];
  }
  return false;  // equal to L
}

bool VerifyEd25519Signature(const Ed25519Signature& signature, const PublicKey& key, const std::uint8_t* message,
                            std::size_t length) {
  if (!IsCanonicalEd25519Scalar(std::span<const std::uint8_t, 32>(signature.data() + 32, 32))) return false;
  if (!SodiumReady()) return false;
  return crypto_sign_ed25519_verify_detached(signature.data(), message, length, key.data()) == 0;
}

bool ParsePublicKeyHex(std::wstring_view hex, PublicKey& key) {
  if (hex.size() != 2 * key.size()) return false;
  const auto digit = [](wchar_t c) {
    if (c >= L'0' && c <= L'9') return c - L'0';
    if (c >= L'a' && c <= L'f') return c - L'a' + 10;
    if (c >= L'A' && c <= L'F') return c - L'A' + 10;
    return -1;
  };
  for (std::size_t i = 0; i < key.size(); ++i) {
    const int high = digit(hex[2 * i]);
    const int low = digit(hex[2 * i + 1]);
    if (high < 0 || low < 0) return false;
    key[i] = static_cast<std::uint8_t>(high * 16 + low);
  }
  return true;
}

bool IsUsablePublicKey(const PublicKey& key) {
  return SodiumReady() && crypto_core_ed25519_is_valid_point(key.data()) == 1;
}

}  // namespace crypto
