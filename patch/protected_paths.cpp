#include "patch/protected_paths.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "text/letter_case.h"

namespace patch {
namespace {

// A path starting with one of these lies in a folder the launcher never cleans.
constexpr std::array<std::wstring_view, 13> kProtectedFolders = {
    L"ui/",    L"ui_cache/", L".runtime/", L"screenshot/", L"screenshots/", L"userdata/",   L"camy/",
    L"cache/", L"data/",     L"config/",   L"syserr/",     L"mark/",        L"offlineshop/",
};

// Compared with the whole file name (the part after the last "/").
constexpr std::array<std::wstring_view, 11> kProtectedFileNames = {
    L"install.id",       L"launcher.state", L"patcher.state", L"launcher.log",
    L"integrity.cache",  L"keysave",        L"ui_positions.txt",
    L"switchbot.pkl",    L"errorlog.txt",   L"dravel2 patcher.exe.config",
    L".gitignore",
};

// Compared with the start of the file name: the client numbers these files.
constexpr std::array<std::wstring_view, 4> kProtectedNamePrefixes = {L"syserr", L"syslog", L"chatlog", L"chat_log"};

// Compared with the end of the whole path.
constexpr std::array<std::wstring_view, 6> kProtectedSuffixes = {L".log", L".tmp", L".part", L".uploading",
                                                                   L".cfg", L".bin"};

// A staged promotion that a crash interrupted leaves this beside its target.
constexpr std::wstring_view kPromotionTempSuffix = L".promote.tmp";

template <std::size_t N>
bool StartsWithAny(std::wstring_view text, const std::array<std::wstring_view, N>& prefixes) {
  for (std::wstring_view prefix : prefixes) {
    if (text.starts_with(prefix)) return true;
  }
  return false;
}

template <std::size_t N>
bool EndsWithAny(std::wstring_view text, const std::array<std::wstring_view, N>& suffixes) {
  for (std::wstring_view suffix : suffixes) {
    if (text.ends_with(suffix)) return true;
  }
  return false;
}

template <std::size_t N>
bool EqualsAny(std::wstring_view text, const std::array<std::wstring_view, N>& names) {
  for (std::wstring_view name : names) {
    if (text == name) return true;
  }
  return false;
}

// Where wchar_t is 16 bits wide, surrogates stand for characters past U+FFFF,
// so they rank above every other unit; elsewhere a unit is a code point.
std::uint32_t CodePointRank(wchar_t unit) {
  const auto code = static_cast<std::uint32_t>(unit);
  if (sizeof(wchar_t) > 2 || code < 0xD800) return code;
  return code < 0xE000 ? code + 0x2000 : code - 0x800;
}

}  // namespace

std::wstring ComparablePath(std::wstring_view relativePath) {
  std::wstring comparable(relativePath);
  for (wchar_t& unit : comparable) unit = unit == L'\\' ? L'/' : text::FoldLetterCase(unit);
  return comparable;
}

bool ComesFirst(std::wstring_view left, std::wstring_view right) {
  return std::ranges::lexicographical_compare(left, right, {}, CodePointRank, CodePointRank);
}

bool IsProtectedPath(std::wstring_view relativePath) {
  const std::wstring path = ComparablePath(relativePath);
  if (path.empty()) return true;
  if (StartsWithAny(path, kProtectedFolders)) return true;
  if (EndsWithAny(path, kProtectedSuffixes) || path.ends_with(kPromotionTempSuffix)) return true;

  const std::size_t lastSeparator = path.rfind(L'/');
  const std::wstring_view fileName =
      lastSeparator == std::wstring::npos ? std::wstring_view(path) : std::wstring_view(path).substr(lastSeparator + 1);
  return EqualsAny(fileName, kProtectedFileNames) || StartsWithAny(fileName, kProtectedNamePrefixes);
}

}  // namespace patch
