#include "net/http_client.h"

#include <span>

namespace net {
namespace {

constexpr wchar_t kSizeQueryError[] = L"Could not query response size.";
constexpr wchar_t kReadError[] = L"Could not read response body.";
constexpr wchar_t kStatusErrorPrefix[] = L"HTTP request failed with status ";

// Grows the body by what the transport says is ready, up to one byte past the
// cap, and keeps what was read.
class CMemoryBody final : public CHttpResponseHandler {
 public:
  CMemoryBody(std::vector<std::uint8_t>& body, std::size_t maxBytes, SHttpResponseFacts& facts)
      : body_(body), maxBytes_(maxBytes), facts_(facts) {}

  bool OnResponse(const SHttpResponseFacts& facts) override {
    facts_ = facts;
    return true;
  }

  std::span<std::uint8_t> ReadBuffer(std::size_t available) override {
    const std::size_t room = RoomWithinCap(available, kept_, maxBytes_);
    body_.resize(kept_ + room);
    return {body_.data() + kept_, room};
  }

  bool OnBodyRead(std::size_t count) override {
    kept_ += count;
    body_.resize(kept_);
    return kept_ <= maxBytes_;
  }

  void DropUnread() { body_.resize(kept_); }

 private:
  std::vector<std::uint8_t>& body_;
  const std::size_t maxBytes_;
  SHttpResponseFacts& facts_;
  std::size_t kept_ = 0;
};

bool IsSuccessStatus(std::uint32_t status) { return status >= 200 && status <= 299; }

}  // namespace

bool CHttpClient::GetOnce(const std::wstring& url, std::size_t maxBytes, SHttpGetResult& result) const {
  result = {};
  SHttpRequest request;
  if (!ParseHttpUrl(url, request.url, result.error)) return false;

  SHttpResponseFacts facts;
  CMemoryBody sink(result.body, maxBytes, facts);
  std::wstring systemError;
  const ETransferOutcome outcome = PerformHttpGet(config_, request, sink, systemError);
  sink.DropUnread();
  result.status = facts.status;
  switch (outcome) {
    case ETransferOutcome::Completed:
      return true;
    case ETransferOutcome::Stopped:  // only a body past the cap stops the sink
      // An error page is refused for its status, however long it was.
      if (!IsSuccessStatus(result.status)) return true;
      result.tooLarge = true;
      result.error = kReadError;
      break;
    case ETransferOutcome::RequestFailed:
      result.error = systemError;
      break;
    case ETransferOutcome::SizeQueryFailed:
      result.error = kSizeQueryError;
      break;
    case ETransferOutcome::ReadFailed:
      result.error = kReadError;
      break;
  }
  result.body.clear();
  return false;
}

SHttpGetResult CHttpClient::Get(const std::wstring& url, std::size_t maxBytes) const {
  SHttpGetResult result;
  for (int attempt = 0; attempt < config_.httpAttempts; ++attempt) {
    if (GetOnce(url, maxBytes, result)) {
      result.ok = IsSuccessStatus(result.status);
      if (!result.ok) result.error = kStatusErrorPrefix + std::to_wstring(result.status) + L".";
      return result;
    }
    if (result.tooLarge) break;
  }
  return result;
}

}  // namespace net
