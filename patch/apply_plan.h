#pragma once
// The pieces of an apply run's plan: which game file may be a target at all,
// and the distinct blobs to fetch with the targets that share each one.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "patch/manifest.h"

namespace patch {

// One distinct content blob and every entry whose file takes its bytes.
struct SFetchItem {
  std::wstring sha256;
  std::uint64_t size = 0;
  std::vector<SManifestEntry> targets;  // list order
};

// Groups entries by SHA-256, items in order of first appearance; an item's
// size is that of its first entry.
std::vector<SFetchItem> GroupFetchItems(const std::vector<SManifestEntry>& entries);

// True when both name the same file: the same file on disk when both exist,
// otherwise the same path once normalised. An empty path names nothing.
bool IsSameFile(const std::filesystem::path& a, const std::filesystem::path& b);

}  // namespace patch
