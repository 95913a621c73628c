#pragma once
// The seam under CHttpClient: one GET request over the OS's HTTP stack
// (WinHTTP on Windows, libcurl elsewhere), its body handed over in pieces.
// Everything a request opens is closed before PerformHttpGet returns.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "app/launcher_config.h"
#include "net/http_url.h"

namespace net {

struct SHttpRequest {
  SHttpUrl url;
  std::uint64_t rangeStart = 0;  // above 0: ask for the bytes from here to the end
  // Set: ask for the bytes from rangeStart up to and including this one, in
  // no content coding, so the offsets are those of the file itself.
  std::optional<std::uint64_t> rangeLast;
};

// The value of the Range header `request` sends ("bytes=A-" or "bytes=A-B"),
// or empty when it asks for the whole body.
std::string RangeHeaderValue(const SHttpRequest& request);

// Facts of the response, gathered before its body is read.
struct SHttpResponseFacts {
  std::uint32_t status = 0;
  std::optional<std::uint64_t> contentLength;
  std::optional<std::uint64_t> contentRangeTotal;  // the number after "/" in Content-Range
};

// Receives one response. The transport asks for room for each read and
// reports how much it put there.
class CHttpResponseHandler {
 public:
  // False: the body is not wanted; the request is closed at once.
  virtual bool OnResponse(const SHttpResponseFacts& facts) = 0;
  // Room for the next read, given how many bytes are ready; never empty. No
  // read takes more than the room, so the room bounds what is read.
  virtual std::span<std::uint8_t> ReadBuffer(std::size_t available) = 0;
  // `count` (above 0) bytes arrived in the room last handed out. False stops the transfer.
  virtual bool OnBodyRead(std::size_t count) = 0;

 protected:
  ~CHttpResponseHandler() = default;
};

enum class ETransferOutcome {
  Completed,        // the whole body went to the handler (OnResponse was called)
  Stopped,          // the handler declined the body or stopped reading
  RequestFailed,    // no response; the error text says why
  SizeQueryFailed,  // asking how much body is ready failed
  ReadFailed,       // reading the body failed
};

// Performs one GET with the user agent and time-outs of `config`. A body
// slower than the minimum rate of `config` (CBodyRateFloor) fails as a read
// that timed out. On a failed outcome `error` holds the system's text for the
// failure.
ETransferOutcome PerformHttpGet(const LauncherConfig& config, const SHttpRequest& request,
                                CHttpResponseHandler& handler, std::wstring& error);

// A Content-Length value: decimal digits only, fitting in 64 bits.
std::optional<std::uint64_t> ParseContentLength(std::wstring_view contentLength);

// The total from a Content-Range value: the digits right after the first "/"
// ("bytes 0-9/10" -> 10). No "/", no digits there ("*") or an overflow: no total.
std::optional<std::uint64_t> ParseContentRangeTotal(std::wstring_view contentRange);

// The room a handler with `used` of its `cap` bytes taken hands out for a read
// of `wanted`: at most one byte past the cap, the byte that tells a longer
// body. `used` must not be past the cap.
std::size_t RoomWithinCap(std::size_t wanted, std::uint64_t used, std::uint64_t cap);

}  // namespace net
