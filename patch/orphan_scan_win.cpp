// Paths are handed to the OS in the "\\?\" form: long paths work, and names
// are taken literally (no trailing dots or spaces dropped, no device names),
// so the file deleted is exactly the file named.
#include <windows.h>

#include <string>
#include <vector>

#include "patch/orphan_scan_os.h"
#include "platform/file_replace.h"
#include "platform/path_text.h"

namespace patch {
namespace {

bool IsSeparator(wchar_t unit) { return unit == L'/' || unit == L'\\'; }

// The absolute folder in "\\?\" form, without a trailing separator.
std::wstring LongPathForm(const std::wstring& folder) {
  std::wstring path(MAX_PATH, L'\0');
  DWORD length = GetFullPathNameW(folder.c_str(), static_cast<DWORD>(path.size()), path.data(), nullptr);
  if (length >= path.size()) {
    path.resize(length);
    length = GetFullPathNameW(folder.c_str(), static_cast<DWORD>(path.size()), path.data(), nullptr);
  }
  path.resize(length < path.size() ? length : 0);
  if (path.empty()) path = folder;

  if (path.starts_with(L"\\\\?\\")) {
    // Already literal.
  } else if (path.starts_with(L"\\\\")) {
    path = L"\\\\?\\UNC\\" + path.substr(2);
  } else {
    path = L"\\\\?\\" + path;
  }
  while (IsSeparator(path.back())) path.pop_back();
  return path;
}

// Symbolic links and junctions lead out of the folder; other reparse points
// (cloud placeholders, deduplicated files) are ordinary files and folders.
bool IsLink(const WIN32_FIND_DATAW& data) {
  return (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
         (data.dwReserved0 == IO_REPARSE_TAG_SYMLINK || data.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT);
}

bool IsFolder(const WIN32_FIND_DATAW& data) { return (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }

std::uint64_t FileSize(const WIN32_FIND_DATAW& data) {
  return (static_cast<std::uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
}

HANDLE FindFirst(const std::wstring& pattern, WIN32_FIND_DATAW& data) {
  return FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &data, FindExSearchNameMatch, nullptr,
                          FIND_FIRST_EX_LARGE_FETCH);
}

// The directory entry of one literal path (no wildcards).
bool ReadEntry(const std::wstring& path, WIN32_FIND_DATAW& data) {
  const HANDLE find = FindFirst(path, data);
  if (find == INVALID_HANDLE_VALUE) return false;
  FindClose(find);
  return true;
}

}  // namespace

void VisitGameFiles(const std::wstring& folder, const GameFileVisitor& visit) {
  const std::wstring root = LongPathForm(folder) + L'\\';
  std::vector<std::wstring> pending{std::wstring()};
  while (!pending.empty()) {
    const std::wstring relative = std::move(pending.back());
    pending.pop_back();
    WIN32_FIND_DATAW data;
    const HANDLE find = FindFirst(root + relative + L'*', data);
    if (find == INVALID_HANDLE_VALUE) continue;  // access denied, gone, or not a folder
    do {
      const std::wstring_view name = data.cFileName;
      if (name == L"." || name == L".." || IsLink(data)) continue;
      if (IsFolder(data)) {
        pending.push_back(relative + std::wstring(name) + L'\\');
      } else {
        visit(relative + std::wstring(name), FileSize(data));
      }
    } while (FindNextFileW(find, &data));
    FindClose(find);
  }
}

bool DeleteGameFile(const std::wstring& folder, std::wstring_view relativePath, std::uint64_t& size) {
  size = 0;
  // Wildcards would make the entry look-ups match other names.
  if (relativePath.find_first_of(L"*?") != std::wstring_view::npos) return false;

  std::wstring path = LongPathForm(folder);
  WIN32_FIND_DATAW data;
  std::size_t start = 0;
  bool named = false;
  for (std::size_t i = 0; i <= relativePath.size(); ++i) {
    if (i < relativePath.size() && !IsSeparator(relativePath[i])) continue;
    if (i > start) {
      // Each folder on the way must be a real folder, not a link elsewhere.
      if (named && (!ReadEntry(path, data) || !IsFolder(data) || IsLink(data))) return false;
      path += L'\\';
      path += relativePath.substr(start, i - start);
      named = true;
    }
    start = i + 1;
  }
  if (!named || !ReadEntry(path, data) || IsFolder(data) || IsLink(data)) return false;

  std::uint32_t errorCode = 0;
  if (!platform::DeleteReadOnlyFile(platform::ToPath(path), errorCode)) return false;
  size = FileSize(data);
  return true;
}

}  // namespace patch
