#include "platform/file_copy.h"

#include <system_error>

namespace platform {

bool CopyFileReplacing(const std::filesystem::path& from, const std::filesystem::path& to,
                       std::uint32_t& errorCode) {
  errorCode = 0;
  std::error_code ec;
  // libstdc++ copies with sendfile in the kernel: no user-space buffer.
  if (std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing, ec)) return true;
  errorCode = static_cast<std::uint32_t>(ec.value());
  return false;
}

}  // namespace platform
