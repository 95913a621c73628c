// std::filesystem::create_directories goes through the C library, whose stat
// refuses "\\?\" paths (it takes the "?" for a wildcard) and whose other calls
// stop near 260 characters; so folders are made one by one on the "\\?\" form.
#include "platform/folder_create.h"

#include <windows.h>

#include <string>

#include "platform/path_text.h"

namespace platform {
namespace {

bool IsFolder(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// `path` may end in a separator, as a volume's root must.
bool CreateFolderChain(const std::wstring& path) {
  if (IsFolder(path) || CreateDirectoryW(path.c_str(), nullptr)) return true;
  if (GetLastError() != ERROR_PATH_NOT_FOUND) return IsFolder(path);  // made meanwhile, or a file is in the way
  // The parent, with its separator; each step is shorter, so the climb ends at
  // the root at the latest.
  const std::size_t cut = path.size() < 2 ? std::wstring::npos : path.find_last_of(L'\\', path.size() - 2);
  if (cut == std::wstring::npos || cut == 0) return false;
  return CreateFolderChain(path.substr(0, cut + 1)) && (CreateDirectoryW(path.c_str(), nullptr) || IsFolder(path));
}

}  // namespace

bool CreateFolders(const std::filesystem::path& folder) {
  const std::wstring path = SystemPath(folder).native();
  return !path.empty() && CreateFolderChain(path);
}

}  // namespace platform
