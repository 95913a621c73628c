#include "platform/file_replace.h"

#include <windows.h>

#include "platform/path_text.h"

namespace platform {

bool MoveReplacingFile(const std::filesystem::path& from, const std::filesystem::path& to,
                       std::uint32_t& errorCode) {
  errorCode = 0;
  if (MoveFileExW(SystemPath(from).c_str(), SystemPath(to).c_str(), MOVEFILE_REPLACE_EXISTING)) return true;
  errorCode = GetLastError();
  return false;
}

bool DeleteReadOnlyFile(const std::filesystem::path& path, std::uint32_t& errorCode) {
  errorCode = 0;
  const std::filesystem::path systemPath = SystemPath(path);
  // A read-only file refuses DeleteFileW; clearing the attribute is all it takes.
  SetFileAttributesW(systemPath.c_str(), FILE_ATTRIBUTE_NORMAL);
  if (DeleteFileW(systemPath.c_str())) return true;
  errorCode = GetLastError();
  return false;
}

bool IsFileLockedError(std::uint32_t errorCode) {
  return errorCode == ERROR_ACCESS_DENIED || errorCode == ERROR_SHARING_VIOLATION ||
         errorCode == ERROR_LOCK_VIOLATION;
}

}  // namespace platform
