#pragma once
// Orphan files: regular files in the game folder that the update list does not
// name, leftovers of removed content and older clients. The counting form of
// the scan feeds the page (a count, a size and a short sample); the full form
// lists every orphan so that the user can have them removed.

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "patch/manifest.h"

namespace patch {

// Sample size of the counting form.
inline constexpr std::size_t kOrphanSampleLimit = 50;
// Sample size of the full form: every orphan.
inline constexpr std::size_t kUnlimitedOrphanSample = std::numeric_limits<std::size_t>::max();

struct SOrphanScan {
  std::uint64_t orphanFiles = 0;
  std::uint64_t orphanBytes = 0;  // a size that cannot be read adds 0
  // Game-relative paths in comparable form ("/"-separated, letter case folded
  // alike on every system); the first orphans of the walk up to the limit,
  // then sorted by code point.
  std::vector<std::wstring> orphanSample;
};

struct SOrphanRemoval {
  std::uint64_t removedFiles = 0;
  std::uint64_t removedBytes = 0;
  std::uint64_t failedFiles = 0;
};

// Walks `gameFolder` and reports every regular file whose comparable path is
// not in the list, is not protected and differs from `excludedRelativePath`
// (the launcher's own file when it lives in the game folder). Links are
// neither followed nor reported; unreadable folders are skipped; a missing
// folder has no orphans. Fails only when no path of the list survives the
// relative-path rule, with "The update list contains no usable files.".
bool ScanOrphans(const std::wstring& gameFolder, const SManifest& manifest, std::size_t sampleLimit,
                 std::wstring_view excludedRelativePath, SOrphanScan& scan, std::wstring& errorText);

// True for a path that removal may act on, judged on the text as given: not
// empty, no root (leading separator, drive, network name), no "." or ".."
// component, no NUL, no trailing separator, and not protected.
bool IsRemovableOrphanPath(std::wstring_view relativePath);

// Deletes each listed file below `gameFolder`. A path that is not removable,
// that passes through a linked folder or that is no longer a regular file is
// left untouched and counted as failed, as is a file the OS will not delete.
// Names are matched without regard to case on every system, as the scan
// reports them in comparable form.
SOrphanRemoval RemoveOrphans(const std::wstring& gameFolder, const std::vector<std::wstring>& orphans);

}  // namespace patch
