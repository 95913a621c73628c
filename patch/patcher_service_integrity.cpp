// Integrity verification and blob failure bookkeeping of the patcher service.
#include <vector>

#include "patch/entry_verification.h"
#include "patch/patcher_service.h"
#include "platform/tick_count.h"

namespace patch {

bool CPatcherService::VerifyEntryIntegrity(const std::wstring& fullPath, const SManifestEntry& entry,
                                           std::wstring& error) {
  const std::vector<std::wstring> paths{fullPath};
  const std::vector<const SManifestEntry*> entries{&entry};
  return CEntryVerification(*this, paths, entries).Passed(0, &error);
}

ERetryVerdict CPatcherService::ConsultBlobFailure(const std::wstring& key) {
  const std::uint64_t now = platform::TickCountMs();
  ERetryVerdict verdict = ERetryVerdict::Allowed;
  actor_.PostAndWait([&] { verdict = blobFailures_.Consult(key, now); });
  return verdict;
}

bool CPatcherService::RecordBlobFailure(const std::wstring& key, bool mismatch) {
  const std::uint64_t now = platform::TickCountMs();
  bool firstReport = false;
  actor_.PostAndWait([&] { firstReport = blobFailures_.RecordFailure(key, mismatch, now); });
  return firstReport;
}

void CPatcherService::RecordBlobSuccess(const std::wstring& key) {
  actor_.PostAndWait([&] { blobFailures_.RecordSuccess(key); });
}

void CPatcherService::ForgetBlobFailures() {
  actor_.PostAndWait([&] { blobFailures_.Clear(); });
}

}  // namespace patch
