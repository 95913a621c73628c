#include "text/utf.h"

#include <windows.h>

namespace text {

std::wstring Utf8ToWide(std::string_view utf8) {
  if (utf8.empty()) return {};
  const int size = static_cast<int>(utf8.size());
  const int needed = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), size, nullptr, 0);
  if (needed <= 0) return {};
  std::wstring out(static_cast<size_t>(needed), L'\0');
  if (MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), size, out.data(), needed) != needed) return {};
  return out;
}

std::string WideToUtf8(std::wstring_view wide) {
  if (wide.empty()) return {};
  const int size = static_cast<int>(wide.size());
  const int needed = WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
  if (needed <= 0) return {};
  std::string out(static_cast<size_t>(needed), '\0');
  if (WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, out.data(), needed, nullptr, nullptr) != needed) return {};
  return out;
}

void AppendUtf16Unit(std::wstring& out, char16_t unit) { out.push_back(static_cast<wchar_t>(unit)); }

}  // namespace text
