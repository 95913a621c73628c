#pragma once
// HTTP status codes the launcher's transfers and their callers act on.

#include <cstdint>

namespace net {

inline constexpr std::uint32_t kStatusOk = 200;
inline constexpr std::uint32_t kStatusPartialContent = 206;
inline constexpr std::uint32_t kStatusNotFound = 404;
inline constexpr std::uint32_t kStatusGone = 410;
inline constexpr std::uint32_t kStatusRangeNotSatisfiable = 416;
inline constexpr std::uint32_t kFirstServerErrorStatus = 500;

}  // namespace net
