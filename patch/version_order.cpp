#include "patch/version_order.h"

#include <array>
#include <cstdint>

namespace patch {
namespace {

constexpr std::size_t kMaxComponents = 4;
constexpr std::size_t kMaxComponentDigits = 9;

using SVersionParts = std::array<std::uint32_t, kMaxComponents>;

bool ParseVersion(std::wstring_view text, SVersionParts& parts) {
  parts.fill(0);
  std::size_t count = 0;
  std::size_t digits = 0;
  for (std::size_t i = 0; i <= text.size(); ++i) {
    if (i == text.size() || text[i] == L'.') {
      if (digits == 0) return false;  // empty component, or empty text
      ++count;
      digits = 0;
      continue;
    }
    if (text[i] < L'0' || text[i] > L'9' || ++digits > kMaxComponentDigits || count == kMaxComponents) {
      return false;
    }
    parts[count] = parts[count] * 10 + static_cast<std::uint32_t>(text[i] - L'0');
  }
  return true;
}

}  // namespace

bool IsNewerVersion(std::wstring_view candidate, std::wstring_view current) {
  SVersionParts candidateParts;
  SVersionParts currentParts;
  return ParseVersion(candidate, candidateParts) && ParseVersion(current, currentParts) &&
         candidateParts > currentParts;
}

}  // namespace patch
