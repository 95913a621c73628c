#include "platform/file_copy.h"

#include <windows.h>

#include "platform/path_text.h"

namespace platform {

bool CopyFileReplacing(const std::filesystem::path& from, const std::filesystem::path& to,
                       std::uint32_t& errorCode) {
  errorCode = 0;
  if (CopyFileW(SystemPath(from).c_str(), SystemPath(to).c_str(), FALSE)) return true;
  errorCode = GetLastError();
  return false;
}

}  // namespace platform
