#include "platform/environment.h"

#include <cstdlib>
#include <filesystem>

#include "platform/path_text.h"
#include "text/utf.h"

namespace platform {

std::wstring EnvironmentVariable(std::wstring_view name) {
  const char* value = std::getenv(text::WideToUtf8(name).c_str());
  return value == nullptr ? std::wstring() : text::Utf8ToWide(value);
}

namespace {

// An XDG base folder: the variable when it holds an absolute path (the rule
// ignores a relative one), else the fallback below the home folder.
std::wstring XdgDirectory(std::wstring_view variable, const std::filesystem::path& belowHome) {
  std::wstring folder = EnvironmentVariable(variable);
  if (folder.starts_with(L'/')) return folder;
  const std::wstring home = UserProfileDirectory();
  if (home.empty()) return {};
  return FromPath(ToPath(home) / belowHome);
}

}  // namespace

std::wstring LocalAppDataDirectory() { return XdgDirectory(L"XDG_DATA_HOME", std::filesystem::path(".local") / "share"); }

std::wstring UserCacheDirectory() { return XdgDirectory(L"XDG_CACHE_HOME", ".cache"); }

std::wstring UserProfileDirectory() { return EnvironmentVariable(L"HOME"); }

}  // namespace platform
