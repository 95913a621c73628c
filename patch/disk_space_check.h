#pragma once
// Before a patch downloads anything it checks that the disk can hold the
// work: the growth of the game files plus one promotion temporary, and the
// blobs that can be in flight in the staging folder at once, with a margin.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace patch {

// One file to fetch: its size in the update list and its size on disk now (0 when absent).
struct STargetSizes {
  std::uint64_t newSize = 0;
  std::uint64_t currentSize = 0;
};

struct SDiskSpaceNeed {
  std::uint64_t gameBytes = 0;
  std::uint64_t stagingBytes = 0;
};

// What a folder's volume offers; a failed query leaves `freeKnown` false, an
// unknown volume leaves `volumeName` empty.
struct SVolumeSpace {
  bool freeKnown = false;
  std::uint64_t freeBytes = 0;
  std::wstring volumeName;
};

inline constexpr std::uint64_t kDiskSpaceMarginBytes = 268435456;  // 256 MiB

SDiskSpaceNeed ComputeDiskSpaceNeed(const std::vector<STargetSizes>& targets);

// Separate volumes must each hold their own need plus the margin; one volume
// (or one that cannot be told) must hold both needs plus the margin once. A
// free-space query that failed lets the check pass.
bool DiskSpaceSuffices(const SDiskSpaceNeed& need, const SVolumeSpace& game, const SVolumeSpace& staging);

// Queries both folders and applies the rule. On shortage: false, `error` =
// "There is not enough free disk space for this update." and a log line with the figures.
bool CheckDiskSpace(const std::filesystem::path& gameFolder, const std::filesystem::path& stagingRoot,
                    const std::vector<STargetSizes>& targets, std::wstring& error);

}  // namespace patch
