#pragma once
// The trust decision for an update list: is it signed by one of the keys this
// launcher was built with?

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "app/launcher_config.h"

namespace crypto {

// The most of a signature file that is read: 8 lines of 88 Base64 characters
// need under 1 KiB; the rest is room for blank lines, blanks and CR.
inline constexpr std::size_t kMaxSignatureFileBytes = 4096;

// signatureText is the raw detached signature file: up to 8 non-empty LF lines
// (space, tab and CR trimmed), each the strict Base64 of one 64-byte Ed25519
// signature. True when some line verifies over exactly message[0..length)
// under a non-zero key of the table, tried line by line, key 1 before key 2.
// A null table, no usable line or a ninth non-empty line gives false.
bool VerifyManifestSignature(const std::uint8_t* message, std::size_t length, std::string_view signatureText,
                             const std::array<PublicKey, 2>* keyTable);

}  // namespace crypto
