#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "net/http_transport.h"
#include "net/http_url.h"
#include "text/utf.h"

namespace {

using net::ParseContentLength;
using net::ParseContentRangeTotal;
using net::ParseHttpUrl;
using net::SHttpUrl;

struct SUrlCase {
  std::wstring url;
  std::wstring host;
  std::wstring pathAndQuery;
  std::uint16_t port;
  bool secure;
};

TEST(HttpUrl, SplitsHttpAndHttpsUrls) {
  const SUrlCase cases[] = {
      {L"https://patch.example.com/live/patchlist.v42.json", L"patch.example.com", L"/live/patchlist.v42.json", 443, true},
      {L"http://127.0.0.1:8080/blobs/ab/cd", L"127.0.0.1", L"/blobs/ab/cd", 8080, false},
      {L"http://example.com", L"example.com", L"/", 80, false},
      {L"https://example.com:8443", L"example.com", L"/", 8443, true},
      {L"http://example.com?v=1", L"example.com", L"/?v=1", 80, false},
      {L"HTTPS://example.com/x", L"example.com", L"/x", 443, true},
  };
  for (const auto& c : cases) {
    SHttpUrl parsed;
    std::wstring error;
    ASSERT_TRUE(ParseHttpUrl(c.url, parsed, error)) << c.url;
    EXPECT_EQ(parsed.host, c.host);
    EXPECT_EQ(parsed.pathAndQuery, c.pathAndQuery);
    EXPECT_EQ(parsed.port, c.port);
    EXPECT_EQ(parsed.secure, c.secure);
    EXPECT_EQ(error, L"");
  }
}

std::wstring HostOfLength(std::size_t length) {
  // Labels of 63 characters, as long as DNS allows, separated by dots.
  std::wstring host;
  while (host.size() < length) host += (host.size() % 64 == 63) ? L'.' : L'a';
  if (host.back() == L'.') host.back() = L'a';
  return host;
}

TEST(HttpUrl, RefusesWhatIsNotAnHttpUrlOrIsTooLong) {
  SHttpUrl parsed;
  std::wstring error;
  EXPECT_TRUE(ParseHttpUrl(L"https://" + HostOfLength(256) + L"/x", parsed, error));
  EXPECT_TRUE(ParseHttpUrl(L"https://example.com/" + std::wstring(2047, L'p'), parsed, error));
  EXPECT_EQ(parsed.pathAndQuery.size(), 2048u);

  for (const std::wstring& url :
       {L"https://" + HostOfLength(257) + L"/x", L"https://example.com/" + std::wstring(2048, L'p'), std::wstring(),
        std::wstring(L"not a url"), std::wstring(L"example.com/file"), std::wstring(L"ftp://example.com/file"),
        std::wstring(L"http://"), std::wstring(L"file:///etc/passwd"), std::wstring(L"http://example.com:99999/")}) {
    error.clear();
    EXPECT_FALSE(ParseHttpUrl(url, parsed, error)) << text::WideToUtf8(url.substr(0, 40));
    EXPECT_EQ(error, L"Could not parse URL.");
  }
}

TEST(HttpHeaders, ContentRangeTotalIsTheNumberAfterTheSlash) {
  constexpr auto kNone = std::nullopt;
  const std::pair<const wchar_t*, std::optional<std::uint64_t>> cases[] = {
      {L"bytes 0-9/10", 10},
      {L"bytes 100-199999/200000", 200000},
      {L"bytes */4096", 4096},
      {L"bytes 0-1/18446744073709551615", 18446744073709551615ull},
      {L"bytes 0-1/18446744073709551616", kNone},
      {L"bytes 0-9/*", kNone},
      {L"bytes 0-9/", kNone},
      {L"bytes 0-9", kNone},
      {L"", kNone},
  };
  for (const auto& [value, total] : cases) {
    EXPECT_EQ(ParseContentRangeTotal(value), total) << value;
  }
}

TEST(HttpHeaders, ContentLengthIsDigitsOnly) {
  EXPECT_EQ(ParseContentLength(L"0"), 0u);
  EXPECT_EQ(ParseContentLength(L"5000000000"), 5000000000ull);  // past 32 bits
  EXPECT_EQ(ParseContentLength(L""), std::nullopt);
  EXPECT_EQ(ParseContentLength(L"12a"), std::nullopt);
  EXPECT_EQ(ParseContentLength(L"-1"), std::nullopt);
  EXPECT_EQ(ParseContentLength(L"99999999999999999999"), std::nullopt);
}

}  // namespace
