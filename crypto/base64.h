#pragma once
// Strict standard Base64 (RFC 4648): alphabet "A"-"Z", "a"-"z", "0"-"9", "+",
// "/", length a multiple of 4, "=" only as the last one or two characters.
// Nothing else is tolerated (no white space, no URL-safe alphabet).

#include <cstdint>
#include <string_view>
#include <vector>

namespace crypto {

// False, with bytes left empty, for any text outside the strict form.
bool DecodeBase64(std::string_view text, std::vector<std::uint8_t>& bytes);

}  // namespace crypto
