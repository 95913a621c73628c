#pragma once
// Publishing a finished file under a name that must not already exist.

#include <cstdint>
#include <filesystem>

namespace platform {

// Renames `from` to `to` on the same volume, failing (with the OS error code)
// when `to` exists, even if it appeared a moment before the call.
bool MoveWithoutReplacing(const std::filesystem::path& from, const std::filesystem::path& to,
                          std::uint32_t& errorCode);

}  // namespace platform
