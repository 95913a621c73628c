#include "patch/blob_failures.h"

#include <algorithm>
#include <limits>

namespace patch {
namespace {

constexpr std::uint64_t kFirstBackoffMs = 5000;
constexpr std::uint64_t kMaxBackoffMs = 300000;
// Only keeps the shift in range; the cap above is reached long before.
constexpr std::uint32_t kMaxBackoffExponent = 20;

std::uint64_t BackoffFor(std::uint32_t failures) {
  if (failures <= 1) return kFirstBackoffMs;
  const std::uint32_t exponent = std::min(failures - 1, kMaxBackoffExponent);
  return std::min(kFirstBackoffMs << exponent, kMaxBackoffMs);
}

}  // namespace

ERetryVerdict CBlobFailureTable::Consult(const std::wstring& key, std::uint64_t nowMs) const {
  const auto found = records_.find(key);
  if (found == records_.end()) return ERetryVerdict::Allowed;
  if (found->second.mismatch) return ERetryVerdict::Refused;
  return nowMs < found->second.retryAt ? ERetryVerdict::Waiting : ERetryVerdict::Allowed;
}

bool CBlobFailureTable::RecordFailure(const std::wstring& key, bool mismatch, std::uint64_t nowMs) {
  SFailureRecord& record = records_[key];
  if (mismatch) {
    record.mismatch = true;
  } else if (!record.mismatch) {
    if (record.failures != std::numeric_limits<std::uint32_t>::max()) ++record.failures;
    record.backoffMs = BackoffFor(record.failures);
    record.retryAt = nowMs + record.backoffMs;
  }
  if (record.reported) return false;
  record.reported = true;
  return true;
}

void CBlobFailureTable::RecordSuccess(const std::wstring& key) { records_.erase(key); }

void CBlobFailureTable::Clear() { records_.clear(); }

}  // namespace patch
