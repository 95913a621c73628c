#pragma once
// The detached signature file beside an update list: up to 8 non-empty LF
// lines, each the Base64 of one Ed25519 signature over the list's bytes.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "app/launcher_config.h"

namespace publisher {

inline constexpr std::size_t kMaxSignatureLines = 8;

// The non-empty lines, each trimmed of space, tab and CR, as a launcher reads them.
std::vector<std::string_view> SignatureLines(std::string_view text);

// True when some line is a signature of message[0..length) by `key`.
bool IsSignedBy(std::string_view text, const PublicKey& key, const std::uint8_t* message, std::size_t length);

}  // namespace publisher
