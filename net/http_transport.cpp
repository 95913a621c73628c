#include "net/http_transport.h"

#include <limits>
#include <string>

namespace net {
namespace {

// The decimal digits at the start of `text` and how many there were; none on overflow.
std::optional<std::uint64_t> ParseLeadingDigits(std::wstring_view text, std::size_t& digits) {
  constexpr auto kMax = std::numeric_limits<std::uint64_t>::max();
  std::uint64_t value = 0;
  digits = 0;
  for (const wchar_t c : text) {
    if (c < L'0' || c > L'9') break;
    const auto digit = static_cast<std::uint64_t>(c - L'0');
    if (value > (kMax - digit) / 10) return std::nullopt;
    value = value * 10 + digit;
    ++digits;
  }
  if (digits == 0) return std::nullopt;
  return value;
}

}  // namespace

std::string RangeHeaderValue(const SHttpRequest& request) {
  if (!request.rangeLast && request.rangeStart == 0) return {};
  std::string value = "bytes=" + std::to_string(request.rangeStart) + "-";
  if (request.rangeLast) value += std::to_string(*request.rangeLast);
  return value;
}

std::optional<std::uint64_t> ParseContentLength(std::wstring_view contentLength) {
  std::size_t digits = 0;
  const auto value = ParseLeadingDigits(contentLength, digits);
  if (digits != contentLength.size()) return std::nullopt;
  return value;
}

std::optional<std::uint64_t> ParseContentRangeTotal(std::wstring_view contentRange) {
  const auto slash = contentRange.find(L'/');
  if (slash == std::wstring_view::npos) return std::nullopt;
  std::size_t digits = 0;
  return ParseLeadingDigits(contentRange.substr(slash + 1), digits);
}

std::size_t RoomWithinCap(std::size_t wanted, std::uint64_t used, std::uint64_t cap) {
  const std::uint64_t left = cap - used;
  return left < wanted ? static_cast<std::size_t>(left) + 1 : wanted;
}

}  // namespace net
