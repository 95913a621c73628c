#include "app/paths.h"

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <mutex>
#include <string_view>
#include <system_error>

#include "platform/environment.h"
#include "platform/module_path.h"
#include "platform/path_text.h"

namespace {

constexpr std::wstring_view kFallbackModuleName = L"TARNHOLD.exe";
constexpr std::wstring_view kRuntimeFolderName = L".runtime";
constexpr std::wstring_view kInstallDataSubfolder = L"Launcher";
// Folder names of earlier launchers; the page cache still lives below them.
constexpr std::wstring_view kVendorFolder = L"OmbrisaAdminPanel";
constexpr std::wstring_view kPatcherFolder = L"Patcher";
constexpr std::wstring_view kUiCacheFolder = L"ui_cache";
constexpr std::size_t kInstallIdentityLength = 32;
// The game folder is looked for below the module folder and this many ancestors of it.
constexpr int kGameFolderAncestors = 3;

std::mutex& InstallDataMutex() {
  static std::mutex mutex;
  return mutex;
}

std::wstring& InstallDataFolder() {
  static std::wstring folder;
  return folder;
}

// std::filesystem's joining rule: a part that is itself absolute replaces what came before.
std::wstring JoinPath(const std::wstring& base, std::initializer_list<std::wstring_view> parts) {
  std::filesystem::path path = platform::ToPath(base);
  for (const std::wstring_view part : parts) path /= platform::ToPath(part);
  return platform::FromPath(path);
}

// Drops the last component and the separators around it; a root stays itself.
std::wstring ParentDirectory(const std::wstring& folder) {
  std::filesystem::path path = platform::ToPath(folder);
  while (path.has_relative_path() && !path.has_filename()) path = path.parent_path();
  return platform::FromPath(path.parent_path());
}

bool IsSeparator(wchar_t c) { return c == L'\\' || c == L'/'; }

bool IsAsciiLetter(wchar_t c) { return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z'); }

// Windows rules: a drive ("D:\games", also "D:games") or a root name such as
// a UNC share ("\\server\share"). On Linux a text starting with "/" is
// absolute as well, and the Windows forms still count, so a setting written
// for Windows is never glued under the module folder.
bool IsAbsoluteFolderText(const std::wstring& text) {
  const bool drive = text.size() >= 2 && IsAsciiLetter(text[0]) && text[1] == L':';
  const bool share = text.size() >= 3 && IsSeparator(text[0]) && IsSeparator(text[1]) && !IsSeparator(text[2]);
  if (drive || share) return true;
  const std::filesystem::path path = platform::ToPath(text);
  return path.has_root_name() || path.is_absolute();
}

bool PathExists(const std::wstring& path) {
  std::error_code error;
  return std::filesystem::exists(platform::ToPath(path), error);
}

std::wstring CurrentDirectory() {
  std::error_code error;
  const std::filesystem::path current = std::filesystem::current_path(error);
  return error ? std::wstring() : platform::FromPath(current);
}

}  // namespace

std::wstring ModulePathFromQuery(const std::wstring& reported, const std::wstring& currentDirectory) {
  // A path that filled the buffer may have been cut off; never trust it.
  if (reported.empty() || reported.size() >= platform::kModulePathBufferChars - 1) {
    return JoinPath(currentDirectory, {kFallbackModuleName});
  }
  return reported;
}

std::wstring ModulePath() { return ModulePathFromQuery(platform::QueryModulePath(), CurrentDirectory()); }

std::wstring ModuleDirectory() { return ParentDirectory(ModulePath()); }

void SetInstallDataDirectory(const std::wstring& folder) {
  const std::lock_guard lock(InstallDataMutex());
  InstallDataFolder() = folder;
}

std::wstring RuntimeDirectory() {
  {
    const std::lock_guard lock(InstallDataMutex());
    if (!InstallDataFolder().empty()) return InstallDataFolder();
  }
  return JoinPath(ModuleDirectory(), {kRuntimeFolderName});
}

bool IsInstallIdentity(const std::wstring& identity) {
  return identity.size() == kInstallIdentityLength && std::ranges::all_of(identity, [](wchar_t c) {
           return (c >= L'0' && c <= L'9') || (c >= L'a' && c <= L'f');
         });
}

std::wstring InstallDataDirectory(const std::wstring& base, const std::wstring& identity) {
  if (base.empty() || !IsInstallIdentity(identity)) return {};
  return JoinPath(base, {CompiledLauncherConfig().productWord, kInstallDataSubfolder, identity});
}

std::wstring UiCacheDirectory() {
  std::wstring base = platform::UserCacheDirectory();
  if (base.empty()) base = RuntimeDirectory();
  return JoinPath(base, {kVendorFolder, kPatcherFolder, kUiCacheFolder});
}

std::wstring LegacyDataDirectory() {
  const std::wstring base = platform::LocalAppDataDirectory();
  if (base.empty()) return {};
  return JoinPath(base, {kVendorFolder, kPatcherFolder});
}

std::wstring ResolveGameDirectory(const std::wstring& configuredText, const std::wstring& moduleFolder,
                                  const std::wstring& executableName, const FileExistsFunction& exists) {
  if (IsAbsoluteFolderText(configuredText)) return configuredText;

  const std::wstring first = JoinPath(moduleFolder, {configuredText});
  if (exists(first)) return first;

  std::wstring ancestor = moduleFolder;
  for (int level = 0; level < kGameFolderAncestors; ++level) {
    ancestor = ParentDirectory(ancestor);
    const std::wstring candidate = JoinPath(ancestor, {configuredText});
    if (exists(JoinPath(candidate, {executableName}))) return candidate;
  }
  return first;
}

std::wstring ResolveGameDirectory(const std::wstring& configuredText, const std::wstring& executableName) {
  return ResolveGameDirectory(configuredText, ModuleDirectory(), executableName, PathExists);
}

std::wstring GameExecutablePath(const LauncherConfig& config) {
  return JoinPath(ResolveGameDirectory(config.gameFolder, config.gameExecutable), {config.gameExecutable});
}
