#pragma once
// Shared by the orphan tests. The protected names are written out here rather
// than taken from the code, so that a changed or missing row fails the tests.

#include <array>
#include <cwctype>
#include <initializer_list>
#include <string>
#include <string_view>

#include "patch/manifest.h"

namespace orphan_tests {

inline constexpr std::array<std::wstring_view, 13> kFolders = {
    L"ui/",    L"ui_cache/", L".runtime/", L"screenshot/", L"screenshots/", L"userdata/",   L"camy/",
    L"cache/", L"data/",     L"config/",   L"syserr/",     L"mark/",        L"offlineshop/"};
inline constexpr std::array<std::wstring_view, 11> kFileNames = {
    L"install.id", L"launcher.state",   L"patcher.state", L"launcher.log", L"integrity.cache",
    L"keysave",    L"ui_positions.txt", L"switchbot.pkl", L"errorlog.txt", L"dravel2 patcher.exe.config",
    L".gitignore"};
inline constexpr std::array<std::wstring_view, 4> kNamePrefixes = {L"syserr", L"syslog", L"chatlog", L"chat_log"};
inline constexpr std::array<std::wstring_view, 7> kSuffixes = {L".log", L".tmp", L".part",       L".uploading",
                                                               L".cfg", L".bin", L".promote.tmp"};

inline std::wstring Upper(std::wstring_view text) {
  std::wstring upper(text);
  for (wchar_t& unit : upper) unit = static_cast<wchar_t>(std::towupper(unit));
  return upper;
}

inline std::wstring Backslashed(std::wstring_view text) {
  std::wstring path(text);
  for (wchar_t& unit : path) {
    if (unit == L'/') unit = L'\\';
  }
  return path;
}

// Sizes and hashes play no part in the scan.
inline patch::SManifest ManifestOf(std::initializer_list<std::wstring_view> paths) {
  patch::SManifest manifest;
  for (std::wstring_view path : paths) manifest.files.push_back({std::wstring(path), 1, std::wstring(64, L'0')});
  return manifest;
}

}  // namespace orphan_tests
