#pragma once
// Writing a file that must not exist yet, so a name planted beforehand (a
// link or another program's file) is never opened and written through.

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace platform {

// True when anything holds the name: a file, a folder, or a link, dangling or not.
inline bool NameIsTaken(const std::filesystem::path& path) {
  std::error_code error;
  return std::filesystem::symlink_status(path, error).type() != std::filesystem::file_type::not_found && !error;
}

enum class ENewFileResult { Written, NotCreated, NotWritten };

// Creates `path` exclusively (never following a link at the final name) and
// writes `bytes` to it. On failure nothing is left behind that this call made,
// and `errorCode` holds the OS error code.
ENewFileResult WriteNewFile(const std::filesystem::path& path, std::string_view bytes, std::uint32_t& errorCode);

}  // namespace platform
