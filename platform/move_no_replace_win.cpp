#include "platform/move_no_replace.h"

#include <windows.h>

#include "platform/path_text.h"

namespace platform {

bool MoveWithoutReplacing(const std::filesystem::path& from, const std::filesystem::path& to,
                          std::uint32_t& errorCode) {
  errorCode = 0;
  // Without MOVEFILE_REPLACE_EXISTING the move refuses an existing target.
  if (MoveFileExW(SystemPath(from).c_str(), SystemPath(to).c_str(), 0)) return true;
  errorCode = GetLastError();
  return false;
}

}  // namespace platform
