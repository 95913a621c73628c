#include "patch/channel_pointer.h"

#include <limits>

namespace patch {
namespace {

constexpr std::string_view kPointerBlanks = " \t\r\n";

std::wstring ReleaseStem(std::uint64_t release) { return L"patchlist.v" + std::to_wstring(release); }

}  // namespace

std::wstring ChannelPointerFileName(std::wstring_view channel) {
  return channel == L"beta" ? L"pointer-beta.txt" : L"pointer.txt";
}

bool ParseChannelPointer(std::string_view bytes, std::uint64_t& release) {
  const std::size_t first = bytes.find_first_not_of(kPointerBlanks);
  if (first == std::string_view::npos) return false;
  const std::string_view digits = bytes.substr(first, bytes.find_last_not_of(kPointerBlanks) - first + 1);
  constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();
  std::uint64_t value = 0;
  for (char c : digits) {
    if (c < '0' || c > '9') return false;
    const auto digit = static_cast<std::uint64_t>(c - '0');
    if (value > (kMax - digit) / 10) return false;
    value = value * 10 + digit;
  }
  if (value == 0) return false;
  release = value;
  return true;
}

std::wstring ManifestFileName(std::uint64_t release) { return ReleaseStem(release) + L".json"; }

std::wstring SignatureFileName(std::uint64_t release) { return ReleaseStem(release) + L".sig"; }

}  // namespace patch
