#pragma once
// Remembers blobs that could not be fetched, or whose bytes did not match the
// signed hash, so later passes neither hammer the host nor download the same
// bad bytes again. Touched only on the update actor; the caller samples the
// tick count, so the time judged is the time the question was asked.

#include <cstdint>
#include <string>
#include <unordered_map>

namespace patch {

enum class ERetryVerdict { Allowed = 0, Waiting = 1, Refused = 2 };

class CBlobFailureTable {
 public:
  ERetryVerdict Consult(const std::wstring& key, std::uint64_t nowMs) const;
  // True only the first time a failure of this key is recorded.
  bool RecordFailure(const std::wstring& key, bool mismatch, std::uint64_t nowMs);
  void RecordSuccess(const std::wstring& key);
  void Clear();

 private:
  struct SFailureRecord {
    bool mismatch = false;
    bool reported = false;
    std::uint32_t failures = 0;
    std::uint64_t backoffMs = 0;
    std::uint64_t retryAt = 0;
  };
  std::unordered_map<std::wstring, SFailureRecord> records_;
};

}  // namespace patch
