#include "log/redaction.h"

namespace logging {
namespace {

bool IsSeparator(wchar_t c) { return c == L'\\' || c == L'/'; }

// The same small table on both targets (the C library's towlower depends on
// the locale), covering the scripts account names are usually written in:
// ASCII, Latin-1, Greek and Cyrillic.
wchar_t LowerCase(wchar_t c) {
  const bool shiftsBy0x20 = (c >= L'A' && c <= L'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7) ||
                            (c >= 0x391 && c <= 0x3AB && c != 0x3A2) || (c >= 0x410 && c <= 0x42F);
  if (shiftsBy0x20) return static_cast<wchar_t>(c + 0x20);
  if (c >= 0x400 && c <= 0x40F) return static_cast<wchar_t>(c + 0x50);
  return c;
}

bool SameCharacter(wchar_t a, wchar_t b) {
  if (IsSeparator(a) || IsSeparator(b)) return IsSeparator(a) && IsSeparator(b);
  return LowerCase(a) == LowerCase(b);
}

// A character that can continue a folder name. Every non-ASCII character
// counts as a letter, so a longer name in another script is never cut short.
bool ContinuesName(wchar_t c) {
  return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') || (c >= L'0' && c <= L'9') || c == L'_' ||
         c == L'-' || c == L'.' || c > 0x7F;
}

std::wstring_view WithoutTrailingSeparators(std::wstring_view path) {
  while (!path.empty() && IsSeparator(path.back())) path.remove_suffix(1);
  return path;
}

bool OccursAt(std::wstring_view text, std::size_t at, std::wstring_view path) {
  if (text.size() - at < path.size()) return false;
  for (std::size_t i = 0; i < path.size(); ++i) {
    if (!SameCharacter(text[at + i], path[i])) return false;
  }
  const std::size_t end = at + path.size();
  return end == text.size() || !ContinuesName(text[end]);
}

}  // namespace

std::wstring RedactPath(std::wstring_view text, std::wstring_view path, std::wstring_view mask) {
  path = WithoutTrailingSeparators(path);
  if (path.empty()) return std::wstring(text);
  std::wstring out;
  out.reserve(text.size());
  std::size_t at = 0;
  while (at < text.size()) {
    if (OccursAt(text, at, path)) {
      out += mask;
      at += path.size();
    } else {
      out += text[at++];
    }
  }
  return out;
}

}  // namespace logging
