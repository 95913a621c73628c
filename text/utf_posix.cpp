#include "text/utf.h"

#include <cstdint>

namespace text {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool IsLowSurrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

void AppendUtf8(std::string& out, char32_t c) {
  if (c < 0x80) {
    out.push_back(static_cast<char>(c));
  } else if (c < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (c >> 6)));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else if (c < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (c >> 12)));
    out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (c >> 18)));
    out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  }
}

}  // namespace

std::wstring Utf8ToWide(std::string_view utf8) {
  std::wstring out;
  out.reserve(utf8.size());
  const auto* p = reinterpret_cast<const unsigned char*>(utf8.data());
  const auto* end = p + utf8.size();
  while (p < end) {
    const unsigned char lead = *p;
    if (lead < 0x80) {
      out.push_back(static_cast<wchar_t>(lead));
      ++p;
      continue;
    }
    int extra;
    char32_t c;
    char32_t min;
    if (lead >= 0xC2 && lead <= 0xDF) {
      extra = 1, c = lead & 0x1F, min = 0x80;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      extra = 2, c = lead & 0x0F, min = 0x800;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
      extra = 3, c = lead & 0x07, min = 0x10000;
    } else {
      return {};
    }
    if (end - p <= extra) return {};
    for (int i = 1; i <= extra; ++i) {
      if ((p[i] & 0xC0) != 0x80) return {};
      c = (c << 6) | (p[i] & 0x3F);
    }
    if (c < min || c > 0x10FFFF || IsHighSurrogate(c) || IsLowSurrogate(c)) return {};
    out.push_back(static_cast<wchar_t>(c));
    p += extra + 1;
  }
  return out;
}

std::string WideToUtf8(std::wstring_view wide) {
  std::string out;
  out.reserve(wide.size());
  for (size_t i = 0; i < wide.size(); ++i) {
    char32_t c = static_cast<char32_t>(wide[i]);
    if (IsHighSurrogate(c) && i + 1 < wide.size() && IsLowSurrogate(static_cast<char32_t>(wide[i + 1]))) {
      c = 0x10000 + ((c - 0xD800) << 10) + (static_cast<char32_t>(wide[i + 1]) - 0xDC00);
      ++i;
    } else if (IsHighSurrogate(c) || IsLowSurrogate(c) || c > 0x10FFFF) {
      c = kReplacement;
    }
    AppendUtf8(out, c);
  }
  return out;
}

void AppendUtf16Unit(std::wstring& out, char16_t unit) {
  if (IsLowSurrogate(unit) && !out.empty() && IsHighSurrogate(static_cast<char32_t>(out.back()))) {
    const char32_t high = static_cast<char32_t>(out.back());
    out.back() = static_cast<wchar_t>(0x10000 + ((high - 0xD800) << 10) + (unit - 0xDC00));
    return;
  }
  out.push_back(static_cast<wchar_t>(unit));
}

}  // namespace text
