#pragma once
// CHttpClient: the patch engine's two kinds of transfer, a GET into memory
// and a resumable download into a partial file that is renamed onto its
// target when complete. Each call is self-contained (its own connection and
// buffer) and may run on any thread; nothing is kept between calls.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "app/launcher_config.h"
#include "net/http_transport.h"

namespace net {

struct SHttpGetResult {
  bool ok = false;          // a response with a status of 200 to 299
  std::uint32_t status = 0; // 0 when no response was had
  std::vector<std::uint8_t> body;
  std::wstring error;       // empty on success
  bool tooLarge = false;    // the body went past its cap and was not read further
};

struct SDownloadResult {
  bool ok = false;
  std::uint32_t status = 0;  // of the last attempt
  std::wstring error;
  // When ok: the SHA-256 of the target's bytes (lower-case hexadecimal), or
  // empty with the sentence of the hash failure in digestError.
  std::wstring digest;
  std::wstring digestError;
  bool tooLarge = false;  // the file went past its cap; its partial file is gone
};

struct SRangeResult {
  bool ok = false;
  // The host did not answer with exactly the range (another status, such as
  // 200 with the whole body, or a shorter part): asking again would not help.
  bool notServed = false;
  std::wstring error;
};

// Takes the bytes of a range in order; false stops the fetch.
using RangeSink = std::function<bool(std::span<const std::uint8_t>)>;

// (bytes received so far, counting a resumed part; total expected bytes, or
// the first value again when the total is unknown).
using DownloadProgress = std::function<void(std::uint64_t received, std::uint64_t total)>;

class CHttpClient {
 public:
  // Reads the user agent, time-outs and attempt count from `config`, which
  // must outlive the client.
  explicit CHttpClient(const LauncherConfig& config) : config_(config) {}

  // One attempt into `result` (all but ok): true when a response arrived and
  // its whole body, of at most `maxBytes`, was read, whatever its status. A
  // longer body is read up to its first byte past the cap; with a status of
  // 200..299 it then fails as a read does, with tooLarge set.
  bool GetOnce(const std::wstring& url, std::size_t maxBytes, SHttpGetResult& result) const;

  // Up to the configured number of attempts, repeated only while no response
  // is had; a status outside 200..299 fails with
  // "HTTP request failed with status N.". A body past `maxBytes` is not tried
  // again: it would be as long the next time.
  SHttpGetResult Get(const std::wstring& url, std::size_t maxBytes) const;

  // Downloads into `partial`, resuming from its current length with a range
  // request, then moves it onto `target` (replacing a read-only file too).
  // The bytes are hashed as they are written; only a file resumed from an
  // earlier part is read back to hash it. A file that would pass `maxBytes`,
  // counting a resumed part, stops before the first byte past it: the partial
  // file is removed and the download fails at once with tooLarge set.
  // Throws std::filesystem::filesystem_error when the parent folders cannot
  // be created and std::ios_base::failure when the finished partial file
  // cannot be closed.
  // Fetches `count` (above 0) bytes of `url` from offset `first`, handing them
  // to `sink` once each, in order. A transfer that breaks is resumed from the
  // first byte not yet handed over, within the configured attempts.
  SRangeResult FetchRange(const std::wstring& url, std::uint64_t first, std::uint64_t count,
                          const RangeSink& sink) const;

  SDownloadResult DownloadFile(const std::wstring& url, const std::filesystem::path& target,
                               const std::filesystem::path& partial, std::uint64_t maxBytes,
                               const DownloadProgress& progress) const;

 private:
  const LauncherConfig& config_;
};

}  // namespace net
