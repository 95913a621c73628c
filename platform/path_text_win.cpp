#include "platform/path_text.h"

namespace platform {

std::filesystem::path ToPath(std::wstring_view text) { return std::filesystem::path(std::wstring(text)); }
std::wstring FromPath(const std::filesystem::path& path) { return path.native(); }

}  // namespace platform
