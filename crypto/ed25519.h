#pragma once
// The one place the launcher calls into the Ed25519 library (libsodium).

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "app/launcher_config.h"

namespace crypto {

// R (32 bytes) followed by S (32 bytes), as RFC 8032 lays it out.
using Ed25519Signature = std::array<std::uint8_t, 64>;

// True when the little-endian scalar is below the group order L. Checked by us
// so that a malleated S + L is refused whatever the library version does.
bool IsCanonicalEd25519Scalar(std::span<const std::uint8_t, 32> scalar);

// Pure Ed25519 (no context, no pre-hash) over exactly message[0..length).
bool VerifyEd25519Signature(const Ed25519Signature& signature, const PublicKey& key, const std::uint8_t* message,
                            std::size_t length);

// A public key written as 64 hexadecimal digits (either case), as branded
// builds and the operator tools take it.
bool ParsePublicKeyHex(std::wstring_view hex, PublicKey& key);

// True for a valid curve point of large order. An all-zero or small-order key
// would verify nothing genuine, or worse, forgeries.
bool IsUsablePublicKey(const PublicKey& key);

}  // namespace crypto
