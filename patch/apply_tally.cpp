#include "patch/apply_tally.h"

#include "log/log.h"

namespace patch {

void CApplyTally::RecordFailure(const SManifestEntry& entry, const std::wstring& reason, bool firstReport) {
  logging::LogWarning(L"patch", L"skip " + entry.path + L" [" + entry.sha256 + L"]: " + reason);
  const std::lock_guard lock(mutex_);
  ++failedCount_;
  if (firstReport) newFailure_ = true;
  if (!hasFirstFailure_) {
    hasFirstFailure_ = true;
    firstFailedPath_ = entry.path;
    firstFailedReason_ = reason;
  }
}

void CApplyTally::CountApplied() {
  const std::lock_guard lock(mutex_);
  ++appliedCount_;
}

std::uint64_t CApplyTally::failedCount() const {
  const std::lock_guard lock(mutex_);
  return failedCount_;
}

void CApplyTally::CopyInto(SPatchOutcome& outcome) const {
  const std::lock_guard lock(mutex_);
  outcome.appliedCount = appliedCount_;
  outcome.failedCount = failedCount_;
  outcome.firstFailedPath = firstFailedPath_;
  outcome.firstFailedReason = firstFailedReason_;
  outcome.newFailure = newFailure_;
}

}  // namespace patch
