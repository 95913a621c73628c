#include "app/link_policy.h"

#include <algorithm>

#include "text/ascii_case.h"

namespace {

constexpr std::wstring_view kHttpsPrefix = L"https://";
constexpr std::size_t kMinLinkLength = 9;  // the prefix and one more character
constexpr std::size_t kMaxLinkLength = 2048;
constexpr std::wstring_view kTrimmed = L" \t\r\n";
constexpr std::wstring_view kForbidden = L"\"<>|";

bool IsForbidden(wchar_t c) { return c < 32 || kForbidden.find(c) != std::wstring_view::npos; }

}  // namespace

std::wstring NormalizeExternalLink(std::wstring_view url) {
  const std::size_t first = url.find_first_not_of(kTrimmed);
  if (first == std::wstring_view::npos) return {};
  const std::wstring_view trimmed = url.substr(first, url.find_last_not_of(kTrimmed) - first + 1);
  if (trimmed.find(L"://") != std::wstring_view::npos) return std::wstring(trimmed);
  return std::wstring(kHttpsPrefix) + std::wstring(trimmed);
}

bool IsAllowedExternalLink(std::wstring_view link) {
  if (link.size() < kMinLinkLength || link.size() > kMaxLinkLength) return false;
  if (!text::EqualsIgnoringAsciiCase(link.substr(0, kHttpsPrefix.size()), kHttpsPrefix)) return false;
  return std::ranges::none_of(link, IsForbidden);
}
