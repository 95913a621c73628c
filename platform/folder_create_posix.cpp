#include "platform/folder_create.h"

#include <system_error>

namespace platform {

bool CreateFolders(const std::filesystem::path& folder) {
  std::error_code ec;
  std::filesystem::create_directories(folder, ec);
  return !ec;
}

}  // namespace platform
