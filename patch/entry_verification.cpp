#include "patch/entry_verification.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "crypto/sha256.h"
#include "patch/patcher_service.h"
#include "platform/path_text.h"

namespace patch {
namespace {

// Hashing is bound by memory and disk well before many cores help.
constexpr unsigned kMaxHashThreads = 4;

constexpr wchar_t kMissing[] = L"Target file is missing.";
constexpr wchar_t kSizeFailed[] = L"File size verification failed.";
constexpr wchar_t kHashFailed[] = L"SHA-256 verification failed.";

}  // namespace

CEntryVerification::CEntryVerification(CPatcherService& service, const std::vector<std::wstring>& fullPaths,
                                       const std::vector<const SManifestEntry*>& entries)
    : service_(service),
      fullPaths_(fullPaths),
      entries_(entries),
      verdicts_(entries.size()),
      errors_(entries.size()) {
  std::vector<SCachedHashQuery> queries(entries.size());
  for (std::size_t i = 0; i < entries.size(); ++i) queries[i].fullPath = &fullPaths[i];
  service_.LookupCachedHashesOnActor(queries);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const SCachedHashQuery& query = queries[i];
    if (!query.stamped) {
      // Only a file that cannot be queried pays for telling "missing" from
      // "not a readable file"; an unreadable folder counts as missing.
      std::error_code ec;
      Settle(i, std::filesystem::exists(platform::ToPath(fullPaths[i]), ec) ? kSizeFailed : kMissing);
    } else if (query.stamp.size != entries[i]->size) {
      Settle(i, kSizeFailed);
    } else if (query.cached) {
      // A hit is trusted as it stands: unchanged bytes that were wrong stay wrong.
      Settle(i, query.sha256 == entries[i]->sha256 ? nullptr : kHashFailed);
    } else {
      toHash_.push_back(i);
    }
  }
  const unsigned threads = std::clamp(std::thread::hardware_concurrency(), 1u, kMaxHashThreads);
  try {
    for (unsigned t = 0; t < std::min<std::size_t>(threads, toHash_.size()); ++t) {
      workers_.emplace_back([this] { HashPending(); });
    }
  } catch (const std::system_error&) {
    // Fewer threads only means a slower check; with none, Passed hashes itself.
  }
}

CEntryVerification::~CEntryVerification() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  workers_.clear();
}

bool CEntryVerification::Passed(std::size_t index, std::wstring* error) {
  std::unique_lock lock(mutex_);
  if (workers_.empty() && !verdicts_[index]) {
    lock.unlock();
    HashPending();
    lock.lock();
  }
  settled_.wait(lock, [&] { return verdicts_[index].has_value(); });
  if (error != nullptr) *error = errors_[index];
  return *verdicts_[index];
}

// Under the lock, or before any worker starts.
void CEntryVerification::Settle(std::size_t index, const wchar_t* failure) {
  verdicts_[index] = failure == nullptr;
  if (failure != nullptr) errors_[index] = failure;
}

void CEntryVerification::HashPending() {
  for (;;) {
    std::size_t index = 0;
    {
      const std::lock_guard lock(mutex_);
      if (stopping_ || nextToHash_ == toHash_.size()) return;
      index = toHash_[nextToHash_++];
    }
    std::wstring digest;
    std::wstring hashError;
    const bool hashed = crypto::HashFileSha256(platform::ToPath(fullPaths_[index]), digest, hashError);
    if (hashed) service_.StoreCachedHashOnActor(fullPaths_[index], entries_[index]->size, digest);
    {
      const std::lock_guard lock(mutex_);
      if (!hashed) {
        verdicts_[index] = false;
        errors_[index] = std::move(hashError);
      } else {
        Settle(index, digest == entries_[index]->sha256 ? nullptr : kHashFailed);
      }
    }
    settled_.notify_all();
  }
}

}  // namespace patch
