// CHttpClient::FetchRange: one closed byte range of a file on the host, for
// rebuilding a file from the parts a player lacks.
#include <algorithm>
#include <memory>

#include "net/http_client.h"
#include "net/http_status.h"

namespace net {
namespace {

constexpr std::size_t kBufferSize = 256 * 1024;
constexpr wchar_t kNotServedError[] = L"The host did not answer with the range asked for.";
constexpr wchar_t kStoppedError[] = L"The range was not wanted further.";

// One attempt: only a 206 answer is read, and never past the range's end.
class CRangeAttempt final : public CHttpResponseHandler {
 public:
  CRangeAttempt(std::uint64_t wanted, const RangeSink& sink, std::unique_ptr<std::uint8_t[]>& buffer)
      : wanted_(wanted), sink_(sink), buffer_(buffer) {}

  bool OnResponse(const SHttpResponseFacts& facts) override {
    notServed_ = facts.status != kStatusPartialContent;
    return !notServed_;
  }

  std::span<std::uint8_t> ReadBuffer(std::size_t available) override {
    if (!buffer_) buffer_ = std::make_unique_for_overwrite<std::uint8_t[]>(kBufferSize);
    return {buffer_.get(), RoomWithinCap(std::min(available, kBufferSize), received_, wanted_)};
  }

  bool OnBodyRead(std::size_t count) override {
    if (count > wanted_ - received_) {
      notServed_ = true;
      return false;
    }
    received_ += count;
    sinkRefused_ = !sink_({buffer_.get(), count});
    return !sinkRefused_;
  }

  std::uint64_t received() const { return received_; }
  bool notServed() const { return notServed_; }
  bool sinkRefused() const { return sinkRefused_; }

 private:
  const std::uint64_t wanted_;
  const RangeSink& sink_;
  std::unique_ptr<std::uint8_t[]>& buffer_;
  std::uint64_t received_ = 0;
  bool notServed_ = false;
  bool sinkRefused_ = false;
};

}  // namespace

SRangeResult CHttpClient::FetchRange(const std::wstring& url, std::uint64_t first, std::uint64_t count,
                                     const RangeSink& sink) const {
  SRangeResult result;
  SHttpRequest request;
  if (count == 0 || !ParseHttpUrl(url, request.url, result.error)) return result;
  std::unique_ptr<std::uint8_t[]> buffer;
  std::uint64_t done = 0;
  for (int attempt = 0; attempt < config_.httpAttempts && done < count; ++attempt) {
    request.rangeStart = first + done;
    request.rangeLast = first + count - 1;
    CRangeAttempt range(count - done, sink, buffer);
    const ETransferOutcome outcome = PerformHttpGet(config_, request, range, result.error);
    done += range.received();
    if (range.notServed() || (outcome == ETransferOutcome::Completed && done < count)) {
      result.notServed = true;
      result.error = kNotServedError;
      return result;
    }
    if (range.sinkRefused()) {
      result.error = kStoppedError;
      return result;
    }
  }
  result.ok = done == count;
  if (result.ok) result.error.clear();
  return result;
}

}  // namespace net
