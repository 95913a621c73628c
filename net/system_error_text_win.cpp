#include "net/system_error_text.h"

#include <windows.h>

namespace net {
namespace {

constexpr wchar_t kUnknownError[] = L"Unknown WinHTTP error.";

}  // namespace

std::wstring SystemErrorText(std::uint32_t code) {
  // WinHTTP's codes (12000 and up) live in winhttp.dll's message table, the
  // rest in the system's.
  DWORD flags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM;
  HMODULE winhttp = GetModuleHandleW(L"winhttp.dll");
  if (winhttp) flags |= FORMAT_MESSAGE_FROM_HMODULE;
  wchar_t* buffer = nullptr;
  const DWORD length = FormatMessageW(flags, winhttp, code, 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
  if (length == 0 || !buffer) {
    if (buffer) LocalFree(buffer);
    return kUnknownError;
  }
  std::wstring text(buffer, length);
  LocalFree(buffer);
  while (!text.empty() && (text.back() == L'\r' || text.back() == L'\n')) text.pop_back();
  return text;
}

}  // namespace net
