#include "platform/move_no_replace.h"

#include <windows.h>

#include "platform/path_text.h"

namespace platform {

bool MoveWithoutReplacing(const std::filesystem::path& from, const std::filesystem::path& to,
                          std::uint32_t& errorCode) {
  errorCode = 0;
  const std::filesystem::path source = SystemPath(from);
  const std::filesystem::path target = SystemPath(to);
  // A hard link is created or refused in one step (Wine's no-replace rename
  // checks and renames in two, so two racing moves could both succeed).
  if (CreateHardLinkW(target.c_str(), source.c_str(), nullptr)) {
    DeleteFileW(source.c_str());
    return true;
  }
  errorCode = GetLastError();
  if (errorCode == ERROR_ALREADY_EXISTS || errorCode == ERROR_FILE_EXISTS) return false;
  // A volume without hard links: without MOVEFILE_REPLACE_EXISTING the move
  // still refuses an existing target.
  errorCode = 0;
  if (MoveFileExW(source.c_str(), target.c_str(), 0)) return true;
  errorCode = GetLastError();
  return false;
}

}  // namespace platform
