#include "platform/path_text.h"

#include "text/utf.h"

namespace platform {

std::filesystem::path ToPath(std::wstring_view text) { return std::filesystem::path(text::WideToUtf8(text)); }
std::wstring FromPath(const std::filesystem::path& path) { return text::Utf8ToWide(path.native()); }
std::filesystem::path SystemPath(const std::filesystem::path& path) { return path; }

}  // namespace platform
