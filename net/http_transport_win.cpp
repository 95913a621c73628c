// WinHTTP in synchronous mode: every request opens its own session, connection
// and request handle and closes them, in reverse order, before returning.
#include <windows.h>
#include <winhttp.h>

#include "net/body_rate_floor.h"
#include "net/http_transport.h"
#include "net/system_error_text.h"

namespace net {
namespace {

class CInternetHandle {
 public:
  explicit CInternetHandle(HINTERNET handle) : handle_(handle) {}
  ~CInternetHandle() {
    if (handle_) WinHttpCloseHandle(handle_);
  }
  CInternetHandle(const CInternetHandle&) = delete;
  CInternetHandle& operator=(const CInternetHandle&) = delete;

  explicit operator bool() const { return handle_ != nullptr; }
  HINTERNET get() const { return handle_; }

 private:
  HINTERNET handle_;
};

ETransferOutcome Fail(ETransferOutcome outcome, std::wstring& error) {
  error = SystemErrorText(GetLastError());
  return outcome;
}

bool ConfigureSession(HINTERNET session, const LauncherConfig& config, bool decodeBodies) {
  const int resolveAndConnect = static_cast<int>(config.resolveConnectTimeoutMs);
  if (!WinHttpSetTimeouts(session, resolveAndConnect, resolveAndConnect, static_cast<int>(config.sendTimeoutMs),
                          static_cast<int>(config.receiveTimeoutMs))) {
    return false;
  }
  // Windows before 8.1 and Wine refuse this option. That is no reason to fail:
  // WinHTTP then advertises no Accept-Encoding, so servers send plain bodies.
  if (!decodeBodies) return true;
  DWORD decompression = WINHTTP_DECOMPRESSION_FLAG_GZIP | WINHTTP_DECOMPRESSION_FLAG_DEFLATE;
  WinHttpSetOption(session, WINHTTP_OPTION_DECOMPRESSION, &decompression, sizeof(decompression));
  return true;
}

// A header as text; none when the response has no such header.
std::optional<std::wstring> QueryHeaderText(HINTERNET request, DWORD header) {
  DWORD size = 0;
  WinHttpQueryHeaders(request, header, WINHTTP_HEADER_NAME_BY_INDEX, WINHTTP_NO_OUTPUT_BUFFER, &size,
                      WINHTTP_NO_HEADER_INDEX);
  if (GetLastError() != ERROR_INSUFFICIENT_BUFFER || size == 0) return std::nullopt;
  std::wstring value(size / sizeof(wchar_t), L'\0');
  if (!WinHttpQueryHeaders(request, header, WINHTTP_HEADER_NAME_BY_INDEX, value.data(), &size,
                           WINHTTP_NO_HEADER_INDEX)) {
    return std::nullopt;
  }
  value.resize(size / sizeof(wchar_t));
  return value;
}

SHttpResponseFacts QueryFacts(HINTERNET request) {
  SHttpResponseFacts facts;
  DWORD status = 0;
  DWORD size = sizeof(status);
  if (WinHttpQueryHeaders(request, WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                          WINHTTP_HEADER_NAME_BY_INDEX, &status, &size, WINHTTP_NO_HEADER_INDEX)) {
    facts.status = status;
  }
  // As text: the numeric form of Content-Length stops at 32 bits.
  if (const auto length = QueryHeaderText(request, WINHTTP_QUERY_CONTENT_LENGTH)) {
    facts.contentLength = ParseContentLength(*length);
  }
  if (const auto range = QueryHeaderText(request, WINHTTP_QUERY_CONTENT_RANGE)) {
    facts.contentRangeTotal = ParseContentRangeTotal(*range);
  }
  return facts;
}

// Reads until WinHTTP reports the end. Some WinHTTP builds (Wine's among them)
// report a connection closed early as a normal end, so a plain body that stops
// short of its Content-Length counts as a broken connection here. A body below
// the minimum rate times out as an idle one would; the receive time-out only
// sees a single read.
ETransferOutcome ReadBody(HINTERNET request, std::optional<std::uint64_t> plainLength, const LauncherConfig& config,
                          CHttpResponseHandler& handler, std::wstring& error) {
  CBodyRateFloor rateFloor(config);
  std::uint64_t received = 0;
  for (;;) {
    DWORD available = 0;
    if (!WinHttpQueryDataAvailable(request, &available)) return Fail(ETransferOutcome::SizeQueryFailed, error);
    if (available == 0) break;
    const auto room = handler.ReadBuffer(available);
    DWORD read = 0;
    if (!WinHttpReadData(request, room.data(), static_cast<DWORD>(room.size()), &read)) {
      return Fail(ETransferOutcome::ReadFailed, error);
    }
    if (read == 0) break;
    received += read;
    if (!handler.OnBodyRead(read)) return ETransferOutcome::Stopped;
    if (rateFloor.Missed(received, CBodyRateFloor::Clock::now())) {
      error = SystemErrorText(ERROR_WINHTTP_TIMEOUT);
      return ETransferOutcome::ReadFailed;
    }
  }
  if (plainLength && received < *plainLength) {
    error = SystemErrorText(ERROR_WINHTTP_CONNECTION_ERROR);
    return ETransferOutcome::ReadFailed;
  }
  return ETransferOutcome::Completed;
}

}  // namespace

ETransferOutcome PerformHttpGet(const LauncherConfig& config, const SHttpRequest& request,
                                CHttpResponseHandler& handler, std::wstring& error) {
  constexpr auto kFailed = ETransferOutcome::RequestFailed;
  const CInternetHandle session(
      WinHttpOpen(config.userAgent.c_str(), WINHTTP_ACCESS_TYPE_DEFAULT_PROXY, WINHTTP_NO_PROXY_NAME,
                  WINHTTP_NO_PROXY_BYPASS, 0));
  if (!session || !ConfigureSession(session.get(), config, !request.rangeLast)) return Fail(kFailed, error);

  const CInternetHandle connection(WinHttpConnect(session.get(), request.url.host.c_str(), request.url.port, 0));
  if (!connection) return Fail(kFailed, error);

  const CInternetHandle http(WinHttpOpenRequest(connection.get(), L"GET", request.url.pathAndQuery.c_str(), nullptr,
                                                WINHTTP_NO_REFERER, WINHTTP_DEFAULT_ACCEPT_TYPES,
                                                request.url.secure ? WINHTTP_FLAG_SECURE : 0));
  if (!http) return Fail(kFailed, error);

  const std::string rangeValue = RangeHeaderValue(request);
  const std::wstring range =
      rangeValue.empty() ? std::wstring() : L"Range: " + std::wstring(rangeValue.begin(), rangeValue.end()) + L"\r\n";
  const BOOL sent = range.empty()
                        ? WinHttpSendRequest(http.get(), WINHTTP_NO_ADDITIONAL_HEADERS, 0, WINHTTP_NO_REQUEST_DATA, 0, 0, 0)
                        : WinHttpSendRequest(http.get(), range.c_str(), static_cast<DWORD>(-1), WINHTTP_NO_REQUEST_DATA,
                                             0, 0, 0);
  if (!sent || !WinHttpReceiveResponse(http.get(), nullptr)) return Fail(kFailed, error);

  const SHttpResponseFacts facts = QueryFacts(http.get());
  if (!handler.OnResponse(facts)) return ETransferOutcome::Stopped;
  // A decoded body is longer than the Content-Length of its encoded form.
  const bool encoded = QueryHeaderText(http.get(), WINHTTP_QUERY_CONTENT_ENCODING).has_value();
  return ReadBody(http.get(), encoded ? std::nullopt : facts.contentLength, config, handler, error);
}

}  // namespace net
