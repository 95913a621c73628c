#include "platform/environment.h"

#include <cstdlib>

#include "platform/path_text.h"
#include "text/utf.h"

namespace platform {

std::wstring EnvironmentVariable(std::wstring_view name) {
  const char* value = std::getenv(text::WideToUtf8(name).c_str());
  return value == nullptr ? std::wstring() : text::Utf8ToWide(value);
}

std::wstring LocalAppDataDirectory() {
  std::wstring dataHome = EnvironmentVariable(L"XDG_DATA_HOME");
  if (dataHome.starts_with(L'/')) return dataHome;
  const std::wstring home = UserProfileDirectory();
  if (home.empty()) return {};
  return FromPath(ToPath(home) / ".local" / "share");
}

std::wstring UserProfileDirectory() { return EnvironmentVariable(L"HOME"); }

}  // namespace platform
