#pragma once
// UTF-8 <-> UTF-16 conversion used everywhere text leaves or enters the program.
//
// Inside the program text is std::wstring. On Windows that is UTF-16. On Linux
// wchar_t is 32-bit, so a wstring holds code points; a lone surrogate (only a
// JSON "\u" escape can produce one) is kept as its own unit, and a high
// surrogate unit followed by a low one is read as the pair it would be on
// Windows. Both targets therefore write identical bytes.

#include <string>
#include <string_view>

namespace text {

// Strict: invalid UTF-8 (overlong forms, encoded surrogates, values past
// U+10FFFF, truncated sequences) gives an empty result.
std::wstring Utf8ToWide(std::string_view utf8);

// An unpaired surrogate becomes U+FFFD.
std::string WideToUtf8(std::wstring_view wide);

// Appends one UTF-16 code unit, as a "\u" escape yields it. On Linux a low
// surrogate right after a high one joins it into one code point, so an
// escaped pair and the same character in raw UTF-8 compare equal there too.
void AppendUtf16Unit(std::wstring& out, char16_t unit);

}  // namespace text
