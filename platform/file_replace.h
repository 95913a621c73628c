#pragma once
// Moving a finished file onto its final name. Failures keep the OS error code
// (GetLastError / errno) so callers can tell a locked target from other
// failures and report the code.

#include <cstdint>
#include <filesystem>

namespace platform {

// Moves `from` onto `to`, replacing a file already there. On failure
// `errorCode` holds the OS error code (0 when the OS gave none).
bool MoveReplacingFile(const std::filesystem::path& from, const std::filesystem::path& to,
                       std::uint32_t& errorCode);

// Deletes a file even when it is marked read-only.
bool DeleteReadOnlyFile(const std::filesystem::path& path, std::uint32_t& errorCode);

// True for the codes that mean another process still holds the file.
bool IsFileLockedError(std::uint32_t errorCode);

}  // namespace platform
