#pragma once
// Comparing names that Windows treats without regard to letter case
// (executable names, command-line switches) the same way on every system.

#include <algorithm>
#include <string_view>

namespace text {

inline wchar_t FoldAsciiCase(wchar_t c) { return (c >= L'A' && c <= L'Z') ? static_cast<wchar_t>(c - L'A' + L'a') : c; }

// Equal apart from the case of the ASCII letters A-Z.
inline bool EqualsIgnoringAsciiCase(std::wstring_view left, std::wstring_view right) {
  return std::ranges::equal(left, right, [](wchar_t a, wchar_t b) { return FoldAsciiCase(a) == FoldAsciiCase(b); });
}

}  // namespace text
