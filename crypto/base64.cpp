#include "crypto/base64.h"

namespace crypto {

namespace {

// The 6-bit value of one alphabet character, or -1.
int SextetOf(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  if (c == '+') return 62;
  if (c == '/') return 63;
  return -1;
}

std::size_t PaddingLength(std::string_view text) {
  if (text.empty() || text.back() != '=') return 0;
  return text[text.size() - 2] == '=' ? 2 : 1;
}

}  // namespace

bool DecodeBase64(std::string_view text, std::vector<std::uint8_t>& bytes) {
  bytes.clear();
  if (text.size() % 4 != 0) return false;
  // Any "=" left in the body is out of place and fails as a non-alphabet character.
  const std::string_view body = text.substr(0, text.size() - PaddingLength(text));
  bytes.reserve(text.size() / 4 * 3);
  std::uint32_t accumulator = 0;
  int pendingBits = 0;
  for (const char c : body) {
    const int sextet = SextetOf(c);
    if (sextet < 0) {
      bytes.clear();
      return false;
    }
    accumulator = (accumulator << 6) | static_cast<std::uint32_t>(sextet);
    pendingBits += 6;
    if (pendingBits >= 8) {
      pendingBits -= 8;
      bytes.push_back(static_cast<std::uint8_t>(accumulator >> pendingBits));
    }
  }
  return true;
}

}  // namespace crypto
