#include "platform/move_no_replace.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <cerrno>

namespace platform {

bool MoveWithoutReplacing(const std::filesystem::path& from, const std::filesystem::path& to,
                          std::uint32_t& errorCode) {
  errorCode = 0;
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) {
    errorCode = static_cast<std::uint32_t>(errno);
    return false;
  }
  // File systems without RENAME_NOREPLACE: a hard link fails just as atomically
  // on an existing name.
  if (link(from.c_str(), to.c_str()) != 0) {
    errorCode = static_cast<std::uint32_t>(errno);
    return false;
  }
  unlink(from.c_str());
  return true;
}

}  // namespace platform
