#include "patch/disk_space_check.h"

#include <algorithm>
#include <cwctype>
#include <functional>
#include <limits>

#include "log/log.h"
#include "platform/disk_space.h"

namespace patch {
namespace {

// Blobs that can be downloading at the same time (one per fetch worker).
constexpr std::size_t kBlobsInFlight = 4;

// Sizes come from the update list; absurd ones must not wrap around into a small need.
std::uint64_t SaturatingAdd(std::uint64_t a, std::uint64_t b) {
  return a > std::numeric_limits<std::uint64_t>::max() - b ? std::numeric_limits<std::uint64_t>::max() : a + b;
}

bool SameVolume(const std::wstring& a, const std::wstring& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](wchar_t x, wchar_t y) { return std::towlower(x) == std::towlower(y); });
}

bool Holds(const SVolumeSpace& volume, std::uint64_t need) {
  return volume.freeBytes >= SaturatingAdd(need, kDiskSpaceMarginBytes);
}

SVolumeSpace QueryVolumeSpace(const std::filesystem::path& folder) {
  SVolumeSpace space;
  space.freeKnown = platform::QueryFreeDiskSpace(folder, space.freeBytes);
  if (!platform::QueryVolumeName(folder, space.volumeName)) space.volumeName.clear();
  return space;
}

}  // namespace

SDiskSpaceNeed ComputeDiskSpaceNeed(const std::vector<STargetSizes>& targets) {
  SDiskSpaceNeed need;
  std::vector<std::uint64_t> newSizes;
  newSizes.reserve(targets.size());
  for (const STargetSizes& target : targets) {
    if (target.newSize > target.currentSize) {
      need.gameBytes = SaturatingAdd(need.gameBytes, target.newSize - target.currentSize);
    }
    newSizes.push_back(target.newSize);
  }
  if (newSizes.empty()) return need;

  const std::size_t inFlight = std::min(newSizes.size(), kBlobsInFlight);
  std::partial_sort(newSizes.begin(), newSizes.begin() + static_cast<std::ptrdiff_t>(inFlight), newSizes.end(),
                    std::greater<>());
  // Room for one promotion temporary beside its target.
  need.gameBytes = SaturatingAdd(need.gameBytes, newSizes.front());
  for (std::size_t i = 0; i < inFlight; ++i) need.stagingBytes = SaturatingAdd(need.stagingBytes, newSizes[i]);
  return need;
}

bool DiskSpaceSuffices(const SDiskSpaceNeed& need, const SVolumeSpace& game, const SVolumeSpace& staging) {
  if (!game.freeKnown || !staging.freeKnown) return true;
  const bool separateVolumes =
      !game.volumeName.empty() && !staging.volumeName.empty() && !SameVolume(game.volumeName, staging.volumeName);
  if (separateVolumes) return Holds(staging, need.stagingBytes) && Holds(game, need.gameBytes);
  return Holds(game, SaturatingAdd(need.gameBytes, need.stagingBytes));
}

bool CheckDiskSpace(const std::filesystem::path& gameFolder, const std::filesystem::path& stagingRoot,
                    const std::vector<STargetSizes>& targets, std::wstring& error) {
  const SDiskSpaceNeed need = ComputeDiskSpaceNeed(targets);
  const SVolumeSpace game = QueryVolumeSpace(gameFolder);
  const SVolumeSpace staging = QueryVolumeSpace(stagingRoot);
  if (DiskSpaceSuffices(need, game, staging)) return true;

  logging::LogWarning(L"patch", L"not enough free space: need " + std::to_wstring(need.gameBytes) +
                                    L" B in the game folder (" + std::to_wstring(game.freeBytes) + L" B free) and " +
                                    std::to_wstring(need.stagingBytes) + L" B for staging (" +
                                    std::to_wstring(staging.freeBytes) + L" B free)");
  error = L"There is not enough free disk space for this update.";
  return false;
}

}  // namespace patch
