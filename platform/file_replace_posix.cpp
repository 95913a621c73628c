#include "platform/file_replace.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace platform {

bool MoveReplacingFile(const std::filesystem::path& from, const std::filesystem::path& to,
                       std::uint32_t& errorCode) {
  errorCode = 0;
  if (std::rename(from.c_str(), to.c_str()) == 0) return true;
  errorCode = static_cast<std::uint32_t>(errno);
  return false;
}

bool DeleteReadOnlyFile(const std::filesystem::path& path, std::uint32_t& errorCode) {
  errorCode = 0;
  // unlink ignores the file's own mode; the owner gets write access anyway so a
  // failed delete leaves the file as writable as the Windows twin leaves it.
  struct stat info {};
  if (lstat(path.c_str(), &info) == 0 && !S_ISLNK(info.st_mode)) chmod(path.c_str(), info.st_mode | S_IWUSR);
  if (unlink(path.c_str()) == 0) return true;
  errorCode = static_cast<std::uint32_t>(errno);
  return false;
}

bool IsFileLockedError(std::uint32_t errorCode) { return errorCode == EBUSY || errorCode == ETXTBSY; }

}  // namespace platform
