#pragma once
// The parts of an http(s) URL that one request needs.

#include <cstdint>
#include <string>
#include <string_view>

namespace net {

struct SHttpUrl {
  std::wstring host;
  std::wstring pathAndQuery;  // never empty: "/" when the URL has no path
  std::uint16_t port = 0;     // the URL's port, else the scheme's default
  bool secure = false;        // https
};

// Accepts http and https URLs with a host of at most 256 characters and a path
// and a query of at most 2048 characters each. Fails with "Could not parse URL."
bool ParseHttpUrl(std::wstring_view url, SHttpUrl& parsed, std::wstring& error);

// The OS part: splits a URL into scheme, host, port, path and query (the
// query with its leading "?"). False when the URL is not http or https.
struct SUrlParts {
  bool secure = false;
  std::wstring host;
  std::uint16_t port = 0;
  std::wstring path;
  std::wstring query;
};
bool CrackHttpUrl(std::wstring_view url, SUrlParts& parts);

}  // namespace net
