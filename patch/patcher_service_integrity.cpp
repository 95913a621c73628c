// Integrity verification and blob failure bookkeeping of the patcher service.
#include <system_error>

#include "crypto/sha256.h"
#include "patch/patcher_service.h"
#include "platform/file_time.h"
#include "platform/path_text.h"
#include "platform/tick_count.h"

namespace patch {

bool CPatcherService::VerifyEntryIntegrity(const std::wstring& fullPath, const SManifestEntry& entry,
                                           std::wstring& error) {
  // One metadata query on the common path; only a file that cannot be
  // queried pays for telling "missing" from "not a readable file".
  platform::SFileStamp stamp;
  if (!platform::ReadFileStamp(fullPath, stamp)) {
    std::error_code ec;
    // An unreadable folder counts as a missing file rather than an
    // exception: either way the file is fetched again.
    error = std::filesystem::exists(platform::ToPath(fullPath), ec) ? L"File size verification failed."
                                                                    : L"Target file is missing.";
    return false;
  }
  if (stamp.size != entry.size) {
    error = L"File size verification failed.";
    return false;
  }

  std::wstring digest;
  if (LookupCachedHashOnActor(fullPath, stamp.size, stamp.lastWriteTime, digest)) {
    // A hit is trusted as it stands: unchanged bytes that were wrong stay wrong.
    if (digest == entry.sha256) {
      error.clear();
      return true;
    }
    error = L"SHA-256 verification failed.";
    return false;
  }

  if (!crypto::HashFileSha256(platform::ToPath(fullPath), digest, error)) return false;
  StoreCachedHashOnActor(fullPath, entry.size, digest);
  if (digest != entry.sha256) {
    error = L"SHA-256 verification failed.";
    return false;
  }
  error.clear();
  return true;
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
