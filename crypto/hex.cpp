#include "crypto/hex.h"

namespace crypto {

namespace {
constexpr wchar_t kHexDigits[] = L"0123456789abcdef";
}  // namespace

std::wstring ToLowerHex(const std::uint8_t* bytes, std::size_t count) {
  std::wstring text;
  text.reserve(count * 2);
  for (std::size_t i = 0; i < count; ++i) {
    text.push_back(kHexDigits[bytes[i] >> 4]);
    text.push_back(kHexDigits[bytes[i] & 0x0F]);
  }
  return text;
}

}  // namespace crypto
