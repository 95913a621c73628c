#pragma once
#include <cstdint>
#include <filesystem>

namespace platform {

// Copies `from` to `to`, overwriting an existing `to`. On failure `errorCode`
// holds the OS error code (GetLastError / errno), which callers report.
bool CopyFileReplacing(const std::filesystem::path& from, const std::filesystem::path& to,
                       std::uint32_t& errorCode);

}  // namespace platform
