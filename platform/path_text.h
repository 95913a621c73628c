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

// The form of `path` that file calls hand to the OS. On Windows it is made
// absolute and normalised as the OS itself would ("/" to "\", "." and ".."
// resolved) and put in the "\\?\" form ("\\?\UNC\" for a network path), so
// paths past 260 characters work; a path already in a "\\?\" or "\\.\" form
// is kept. Elsewhere the path is returned as it is. Texts shown to people keep
// the path as it was given.
std::filesystem::path SystemPath(const std::filesystem::path& path);

}  // namespace platform
