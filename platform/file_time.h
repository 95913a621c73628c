#pragma once
// Size and last-write time of a file: what the integrity cache keys a stored hash on.
// Times are counted the Windows way on both systems, so a cache written by
// one build means the same to the other.

#include <cstdint>
#include <string>

namespace platform {

struct SFileStamp {
  std::uint64_t size = 0;
  // 100-nanosecond units since 1601-01-01 UTC.
  std::int64_t lastWriteTime = 0;
};

// False, leaving `stamp` untouched, when the path is missing, cannot be
// queried or is not a regular file.
bool ReadFileStamp(const std::wstring& path, SFileStamp& stamp);

// A Unix time (seconds since 1970-01-01 UTC plus 0..999999999 nanoseconds)
// in the unit above; digits below 100 ns are dropped, times beyond the
// 64-bit range saturate.
std::int64_t FileTimeFromUnixTime(std::int64_t seconds, std::int64_t nanoseconds);

}  // namespace platform
