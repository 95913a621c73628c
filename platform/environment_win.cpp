#include "platform/environment.h"

#include <windows.h>

#include <filesystem>
#include <system_error>

namespace platform {

std::wstring EnvironmentVariable(std::wstring_view name) {
  const std::wstring key(name);
  std::wstring value(128, L'\0');
  // The variable may grow between the calls, so ask again until the answer fits.
  for (;;) {
    const DWORD length = GetEnvironmentVariableW(key.c_str(), value.data(), static_cast<DWORD>(value.size()));
    if (length == 0) return {};
    if (length < value.size()) {
      value.resize(length);
      return value;
    }
    value.resize(length);
  }
}

std::wstring LocalAppDataDirectory() { return EnvironmentVariable(L"LOCALAPPDATA"); }

std::wstring UserCacheDirectory() {
  std::error_code error;
  const std::filesystem::path temp = std::filesystem::temp_directory_path(error);
  return error ? std::wstring() : temp.wstring();
}

std::wstring UserProfileDirectory() { return EnvironmentVariable(L"USERPROFILE"); }

}  // namespace platform
