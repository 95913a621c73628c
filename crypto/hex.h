#pragma once
// Lower-case hexadecimal text of raw bytes: the form every SHA-256 value takes
// in the patch engine, so digests compare as plain strings.

#include <cstddef>
#include <cstdint>
#include <string>

namespace crypto {

// Each byte becomes two digits from "0123456789abcdef", high nibble first.
std::wstring ToLowerHex(const std::uint8_t* bytes, std::size_t count);

}  // namespace crypto
