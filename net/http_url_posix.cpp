#include <curl/curl.h>

#include <charconv>
#include <memory>
#include <optional>
#include <string>

#include "net/http_url.h"
#include "text/utf.h"

namespace net {
namespace {

struct CUrlDeleter {
  void operator()(CURLU* url) const { curl_url_cleanup(url); }
};

std::optional<std::string> UrlPart(CURLU* url, CURLUPart part, unsigned int flags = 0) {
  char* value = nullptr;
  if (curl_url_get(url, part, &value, flags) != CURLUE_OK) return std::nullopt;
  std::string copy(value);
  curl_free(value);
  return copy;
}

}  // namespace

bool CrackHttpUrl(std::wstring_view url, SUrlParts& parts) {
  const std::string utf8 = text::WideToUtf8(url);
  if (utf8.find('\0') != std::string::npos) return false;
  std::unique_ptr<CURLU, CUrlDeleter> handle(curl_url());
  if (!handle || curl_url_set(handle.get(), CURLUPART_URL, utf8.c_str(), 0) != CURLUE_OK) return false;

  const auto scheme = UrlPart(handle.get(), CURLUPART_SCHEME);
  const auto host = UrlPart(handle.get(), CURLUPART_HOST);
  const auto port = UrlPart(handle.get(), CURLUPART_PORT, CURLU_DEFAULT_PORT);
  if (!scheme || (*scheme != "http" && *scheme != "https") || !host || !port) return false;
  std::uint16_t portNumber = 0;
  const auto [end, failure] = std::from_chars(port->data(), port->data() + port->size(), portNumber);
  if (failure != std::errc() || end != port->data() + port->size()) return false;

  parts.secure = *scheme == "https";
  parts.host = text::Utf8ToWide(*host);
  parts.port = portNumber;
  parts.path = text::Utf8ToWide(UrlPart(handle.get(), CURLUPART_PATH).value_or(""));
  const auto query = UrlPart(handle.get(), CURLUPART_QUERY);
  parts.query = query ? L"?" + text::Utf8ToWide(*query) : L"";
  return true;
}

}  // namespace net
