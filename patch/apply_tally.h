#pragma once
// The counts of one apply run, shared by its fetch workers under one mutex:
// files applied, files that could not be updated and the first of those, which
// the summary names.

#include <cstdint>
#include <mutex>
#include <string>

#include "patch/manifest.h"
#include "patch/patch_progress.h"

namespace patch {

class CApplyTally {
 public:
  // Logs "skip <path> [<sha256>]: <reason>" and counts the entry as not
  // updated. `firstReport`: this is the first report of its blob's failure.
  void RecordFailure(const SManifestEntry& entry, const std::wstring& reason, bool firstReport);
  void CountApplied();

  std::uint64_t failedCount() const;
  // Fills the counting fields of `outcome`; the rest is left as it is.
  void CopyInto(SPatchOutcome& outcome) const;

 private:
  mutable std::mutex mutex_;
  std::uint64_t appliedCount_ = 0;
  std::uint64_t failedCount_ = 0;
  bool hasFirstFailure_ = false;
  std::wstring firstFailedPath_;
  std::wstring firstFailedReason_;
  bool newFailure_ = false;
};

}  // namespace patch
