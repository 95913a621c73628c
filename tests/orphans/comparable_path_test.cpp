#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "patch/protected_paths.h"
#include "text/utf.h"

namespace {

// Each row's spellings are one name to Windows's file systems (or, for "İ"
// and "ẞ", are deliberately taken as one); the comparable form must be the
// same text on both systems.
TEST(ComparablePath, FoldsLetterCaseAsWindowsFileSystemsMatchNames) {
  const struct { std::wstring_view spellings[2], comparable; } rows[] = {
      {{L"Data\\\u00C4.TXT", L"data/\u00E4.txt"}, L"data/\u00E4.txt"},
      {{L"\u0178", L"\u00FF"}, L"\u00FF"},
      {{L"KIRMIZI", L"k\u0131rm\u0131z\u0131"}, L"kirmizi"},
      {{L"\u039B\u039F\u0393\u039F\u03A3", L"\u03BB\u03BF\u03B3\u03BF\u03C2"}, L"\u03BB\u03BF\u03B3\u03BF\u03C3"},
      {{L"\u01C4", L"\u01C5"}, L"\u01C6"},
      {{L"\u017F", L"S"}, L"s"},
      {{L"\u0130", L"I"}, L"i"},
      {{L"\u1E9E", L"\u00DF"}, L"\u00DF"},
      // Windows's upcase tables stop at U+FFFF.
      {{L"\U00010400", L"\U00010400"}, L"\U00010400"},
  };
  for (const auto& row : rows) {
    for (std::wstring_view spelling : row.spellings) {
      EXPECT_EQ(text::WideToUtf8(patch::ComparablePath(spelling)), text::WideToUtf8(row.comparable));
    }
  }
  for (std::uint32_t code = 1; code <= 0xFFFF; ++code) {
    if (code >= 0xD800 && code < 0xE000) continue;
    const std::wstring once = patch::ComparablePath(std::wstring(1, static_cast<wchar_t>(code)));
    ASSERT_EQ(patch::ComparablePath(once), once) << code;
  }
}

TEST(ComparablePath, OrdersByCodePointOnBothSystems) {
  EXPECT_TRUE(patch::ComesFirst(L"a/\uFFFD", L"a/\U0001F600"));
  EXPECT_FALSE(patch::ComesFirst(L"a/\U0001F600", L"a/\uFFFD"));
  EXPECT_TRUE(patch::ComesFirst(L"a", L"a/b"));
}

}  // namespace
