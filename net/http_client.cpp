#include "net/http_client.h"

#include <span>

namespace net {
namespace {

constexpr wchar_t kSizeQueryError[] = L"Could not query response size.";
constexpr wchar_t kReadError[] = L"Could not read response body.";
constexpr wchar_t kStatusErrorPrefix[] = L"HTTP request failed with status ";

// Grows the body by what the transport says is ready and keeps what was read.
class CMemoryBody final : public CHttpResponseHandler {
 public:
  CMemoryBody(std::vector<std::uint8_t>& body, SHttpResponseFacts& facts) : body_(body), facts_(facts) {}

  bool OnResponse(const SHttpResponseFacts& facts) override {
    facts_ = facts;
    return true;
  }

  std::span<std::uint8_t> ReadBuffer(std::size_t available) override {
    body_.resize(kept_ + available);
    return {body_.data() + kept_, available};
  }

  bool OnBodyRead(std::size_t count) override {
    kept_ += count;
    body_.resize(kept_);
    return true;
  }

  void DropUnread() { body_.resize(kept_); }

 private:
  std::vector<std::uint8_t>& body_;
  SHttpResponseFacts& facts_;
  std::size_t kept_ = 0;
};

bool IsSuccessStatus(std::uint32_t status) { return status >= 200 && status <= 299; }

}  // namespace

bool CHttpClient::GetOnce(const std::wstring& url, std::vector<std::uint8_t>& body, SHttpResponseFacts& facts,
                          std::wstring& error) const {
  body.clear();
  facts = {};
  error.clear();
  SHttpRequest request;
  if (!ParseHttpUrl(url, request.url, error)) return false;

  CMemoryBody sink(body, facts);
  std::wstring systemError;
  const ETransferOutcome outcome = PerformHttpGet(config_, request, sink, systemError);
  sink.DropUnread();
  switch (outcome) {
    case ETransferOutcome::Completed:
    case ETransferOutcome::Stopped:
      return true;
    case ETransferOutcome::RequestFailed:
      error = systemError;
      break;
    case ETransferOutcome::SizeQueryFailed:
      error = kSizeQueryError;
      break;
    case ETransferOutcome::ReadFailed:
      error = kReadError;
      break;
  }
  body.clear();
  return false;
}

SHttpGetResult CHttpClient::Get(const std::wstring& url) const {
  SHttpGetResult result;
  for (int attempt = 0; attempt < config_.httpAttempts; ++attempt) {
    SHttpResponseFacts facts;
    if (!GetOnce(url, result.body, facts, result.error)) {
      result.status = facts.status;
      continue;
    }
    result.status = facts.status;
    result.ok = IsSuccessStatus(facts.status);
    if (!result.ok) result.error = kStatusErrorPrefix + std::to_wstring(facts.status) + L".";
    return result;
  }
  return result;
}

}  // namespace net
