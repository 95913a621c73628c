#pragma once
// Conversion between the program's wide texts and std::filesystem paths.
// On Windows a path is UTF-16 already; on Linux it is built from UTF-8 so the
// file names on disk are the same bytes the design's UTF-8 rules produce
// (never the process locale's encoding).

#include <filesystem>
#include <string>
#include <string_view>

namespace platform {

std::filesystem::path ToPath(std::wstring_view text);
std::wstring FromPath(const std::filesystem::path& path);

}  // namespace platform
