#pragma once
// What a patch run reports while it works and what it leaves behind.

#include <cstdint>
#include <string>
#include <vector>

namespace patch {

struct SPatchProgress {
  // 1 preparing, 4 downloading, 5 applying, 6 up to date.
  std::uint32_t phase = 0;
  float fraction = 0.0f;
  std::uint64_t bytesDone = 0;
  std::uint64_t bytesTotal = 0;
  // Carried for other reporters; a patch run leaves both at zero.
  std::uint64_t reservedA = 0;
  std::uint64_t reservedB = 0;
  std::uint64_t filesDone = 0;
  std::uint64_t filesTotal = 0;
  double speedMbps = 0.0;
  std::wstring status;
  std::wstring file;
};

struct SPatchOutcome {
  std::uint64_t appliedCount = 0;
  std::uint64_t failedCount = 0;
  std::wstring firstFailedPath;
  std::wstring firstFailedReason;
  bool newFailure = false;
  // The files left in the game folder that the list does not name, as the
  // run's closing orphan scan found them; the controller keeps the list.
  std::uint64_t orphanFiles = 0;
  std::uint64_t orphanBytes = 0;
  std::vector<std::wstring> orphanList;
};

// "1 file could not be updated: a (reason). The rest of the update was applied."
// and its plural form; empty when nothing failed.
std::wstring PatchSummaryText(const SPatchOutcome& outcome);

}  // namespace patch
