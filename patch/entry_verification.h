#pragma once
// Verifying many list entries at once, as a synchronisation or the planning
// of a patch does: every file's size and time read first, all integrity
// cache lookups in one trip to the update actor, and only the files the cache
// cannot vouch for hashed, on a small pool of threads. The caller takes the
// verdicts in list order while the pool works ahead.

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "patch/manifest.h"

namespace patch {

class CPatcherService;

class CEntryVerification {
 public:
  // `fullPaths[i]` is where `entries[i]` lives; both must outlive this object.
  CEntryVerification(CPatcherService& service, const std::vector<std::wstring>& fullPaths,
                     const std::vector<const SManifestEntry*>& entries);
  // Work not yet started is dropped; started hashes finish first.
  ~CEntryVerification();
  CEntryVerification(const CEntryVerification&) = delete;
  CEntryVerification& operator=(const CEntryVerification&) = delete;

  // Entry `index`'s verdict, waiting for it. A failure comes with
  // "Target file is missing.", "File size verification failed.",
  // "SHA-256 verification failed." or the hashing error in `error`.
  bool Passed(std::size_t index, std::wstring* error = nullptr);

 private:
  void Settle(std::size_t index, const wchar_t* failure);
  void HashPending();

  CPatcherService& service_;
  const std::vector<std::wstring>& fullPaths_;
  const std::vector<const SManifestEntry*>& entries_;
  std::vector<std::size_t> toHash_;  // list order
  std::mutex mutex_;
  std::condition_variable settled_;
  std::vector<std::optional<bool>> verdicts_;
  std::vector<std::wstring> errors_;
  std::size_t nextToHash_ = 0;
  bool stopping_ = false;
  std::vector<std::jthread> workers_;
};

}  // namespace patch
