#include "platform/path_text.h"

#include <windows.h>

#include <string>

namespace platform {
namespace {

bool IsSeparator(wchar_t unit) { return unit == L'\\' || unit == L'/'; }

// "\\?\..." is taken literally and "\\.\..." names a device: neither may be
// rewritten.
bool IsLiteralOrDevicePath(std::wstring_view text) {
  return text.size() >= 4 && IsSeparator(text[0]) && IsSeparator(text[1]) && (text[2] == L'?' || text[2] == L'.') &&
         IsSeparator(text[3]);
}

// The absolute path the OS would make of `text`; empty when it cannot.
std::wstring FullPath(const std::wstring& text) {
  std::wstring full(text.size() + MAX_PATH, L'\0');
  DWORD length = GetFullPathNameW(text.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
  if (length >= full.size()) {
    full.resize(length);
    length = GetFullPathNameW(text.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
  }
  full.resize(length < full.size() ? length : 0);
  return full;
}

}  // namespace

std::filesystem::path ToPath(std::wstring_view text) { return std::filesystem::path(std::wstring(text)); }
std::wstring FromPath(const std::filesystem::path& path) { return path.native(); }

std::filesystem::path SystemPath(const std::filesystem::path& path) {
  const std::wstring& text = path.native();
  if (text.empty() || IsLiteralOrDevicePath(text)) return path;
  const std::wstring full = FullPath(text);
  if (full.size() >= 3 && full[1] == L':' && full[2] == L'\\') return L"\\\\?\\" + full;
  if (full.size() > 2 && full.starts_with(L"\\\\") && !IsLiteralOrDevicePath(full)) {
    return L"\\\\?\\UNC\\" + full.substr(2);
  }
  return path;
}

}  // namespace platform
