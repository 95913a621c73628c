#pragma once
// Remembers the SHA-256 last computed for each game file together with the
// file's size and last-write time, so an unchanged file need not be read
// again. Persisted as "integrity.cache" in the runtime folder: one
// "key|size|mtime|sha256" line per file. Touched only on the update actor.

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace patch {

struct SIntegrityRecord {
  std::uint64_t size = 0;
  std::int64_t mtime = 0;
  std::wstring sha256;

  bool operator==(const SIntegrityRecord&) const = default;
};

// Records by IntegrityCacheKey.
using IntegrityRecords = std::unordered_map<std::wstring, SIntegrityRecord>;

// The records of the file's lines: fields trimmed, lines that do not parse
// skipped, a later line for the same key winning.
IntegrityRecords ParseIntegrityCache(const std::vector<std::wstring>& lines);

// The file's text, one line per record in no particular order; a record whose
// key holds a line break is left out.
std::string FormatIntegrityCache(const IntegrityRecords& records);

// The full path in lexically normal form, "\" turned into "/", every
// character lower-cased: paths differing only in case or separator share a record.
std::wstring IntegrityCacheKey(const std::wstring& fullPath);

class CIntegrityCache {
 public:
  explicit CIntegrityCache(std::wstring runtimeFolder);

  // True with `sha256` set when a record for the path has this size and time
  // and a non-empty hash. The first lookup or store reads the file.
  bool Lookup(const std::wstring& fullPath, std::uint64_t size, std::int64_t mtime, std::wstring& sha256);
  // Replaces the path's record. `mtime` is the file's last-write time in
  // 100-ns units since 1601, 0 when it could not be read.
  void Store(const std::wstring& fullPath, std::uint64_t size, std::int64_t mtime, const std::wstring& sha256);
  // Rewrites the file when it has been read and a record changed since the
  // last complete write; a failed write keeps the changes for the next try.
  void Persist();

 private:
  void EnsureLoaded();
  std::wstring CacheFile() const;

  std::wstring runtimeFolder_;
  IntegrityRecords records_;
  bool loaded_ = false;
  bool dirty_ = false;
};

}  // namespace patch
