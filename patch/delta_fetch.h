#pragma once
// A file's new content rebuilt from the old copy at its target and the chunks
// that copy lacks, fetched as byte ranges of the whole-file blob. Nothing of
// it is trusted until the rebuilt file's SHA-256 matches the signed one; on
// any surprise the caller downloads the whole file as it always has.

#include <cstdint>
#include <filesystem>
#include <string>

#include "net/http_client.h"
#include "patch/manifest.h"

namespace patch {

struct SDeltaSource {
  std::wstring indexUrl;  // the entry's chunk index blob
  std::wstring blobUrl;   // the entry's whole-file blob
  std::filesystem::path oldFile;
};

// Told how many bytes the rebuild will fetch once that is known (the index
// included), then of each piece as it arrives.
class CDeltaProgress {
 public:
  virtual void Planned(std::uint64_t bytes) = 0;
  virtual void Fetched(std::uint64_t bytes) = 0;

 protected:
  ~CDeltaProgress() = default;
};

// True when `output` holds `entry`'s content, verified; `summary` then says
// what was fetched. False with the reason in `summary` and no `output` left.
bool FetchByDelta(const net::CHttpClient& http, const SManifestEntry& entry, const SDeltaSource& source,
                  const std::filesystem::path& output, CDeltaProgress& progress, std::wstring& summary);

}  // namespace patch
