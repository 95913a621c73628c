#include "platform/os_description.h"

#include <windows.h>

namespace platform {
namespace {

// GetVersionEx lies to programs without a compatibility manifest; the native
// call does not. Looked up by name because it is not in the import libraries.
using RtlGetVersionFunction = LONG(WINAPI*)(RTL_OSVERSIONINFOW*);

constexpr wchar_t kUnknownVersion[] = L"Windows (version unknown)";

}  // namespace

std::wstring OperatingSystemDescription() {
  const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
  if (ntdll == nullptr) return kUnknownVersion;
  const FARPROC entry = GetProcAddress(ntdll, "RtlGetVersion");
  if (entry == nullptr) return kUnknownVersion;
  const auto rtlGetVersion = reinterpret_cast<RtlGetVersionFunction>(reinterpret_cast<void (*)()>(entry));
  RTL_OSVERSIONINFOW info{};
  info.dwOSVersionInfoSize = sizeof info;
  if (rtlGetVersion(&info) != 0) return kUnknownVersion;
  return L"Windows " + std::to_wstring(info.dwMajorVersion) + L"." + std::to_wstring(info.dwMinorVersion) + L"." +
         std::to_wstring(info.dwBuildNumber);
}

}  // namespace platform
