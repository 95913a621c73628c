#pragma once
// Key pairs, signatures and encodings for the signature tests, made with
// libsodium's own signer and encoder so they do not lean on the code under test.

#include <sodium.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "crypto/ed25519.h"

namespace signing_support {

inline std::vector<std::uint8_t> HexBytes(std::string_view hex) {
  std::vector<std::uint8_t> bytes(hex.size() / 2);
  if (bytes.empty()) return bytes;
  std::size_t written = 0;
  if (sodium_hex2bin(bytes.data(), bytes.size(), hex.data(), hex.size(), nullptr, &written, nullptr) != 0 ||
      written != bytes.size()) {
    throw std::invalid_argument("bad hex in test data");
  }
  return bytes;
}

inline std::string Base64Of(const std::uint8_t* bytes, std::size_t count) {
  std::string text(sodium_base64_ENCODED_LEN(count, sodium_base64_VARIANT_ORIGINAL), '\0');
  sodium_bin2base64(text.data(), text.size(), bytes, count, sodium_base64_VARIANT_ORIGINAL);
  text.resize(std::strlen(text.c_str()));
  return text;
}

inline std::string Base64Of(const crypto::Ed25519Signature& signature) {
  return Base64Of(signature.data(), signature.size());
}

struct SKeyPair {
  PublicKey publicKey{};
  std::uint8_t secretKey[crypto_sign_SECRETKEYBYTES]{};

  SKeyPair() {
    if (sodium_init() < 0) throw std::runtime_error("libsodium did not initialise");
    crypto_sign_keypair(publicKey.data(), secretKey);
  }

  crypto::Ed25519Signature Sign(std::string_view message) const {
    crypto::Ed25519Signature signature{};
    crypto_sign_detached(signature.data(), nullptr, reinterpret_cast<const std::uint8_t*>(message.data()),
                         message.size(), secretKey);
    return signature;
  }
};

// The same signature with S replaced by S + L (256-bit little-endian sum):
// the same group element, a different encoding.
inline crypto::Ed25519Signature WithSPlusGroupOrder(crypto::Ed25519Signature signature) {
  static constexpr std::uint8_t kGroupOrder[32] = {
      0xed, 0xd3, 0xf5, 0x5c, 0x1a, 0x63, 0x12, 0x58, 0xd6, 0x9c, 0xf7, 0xa2, 0xde, 0xf9, 0xde, 0x14,
      0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x10,
  };
  unsigned carry = 0;
  for (std::size_t i = 0; i < 32; ++i) {
    const unsigned sum = signature[32 + i] + kGroupOrder[i] + carry;
    signature[32 + i] = static_cast<std::uint8_t>(sum);
    carry = sum >> 8;
  }
  return signature;
}

}  // namespace signing_support
