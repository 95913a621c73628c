#pragma once
// Creating a folder together with its missing parents, at any path length.

#include <filesystem>

namespace platform {

// True when `folder` exists as a folder afterwards, created here or before.
bool CreateFolders(const std::filesystem::path& folder);

}  // namespace platform
