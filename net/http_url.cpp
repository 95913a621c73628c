#include "net/http_url.h"

namespace net {
namespace {

constexpr wchar_t kParseError[] = L"Could not parse URL.";
constexpr std::size_t kMaxHostLength = 256;
constexpr std::size_t kMaxPathLength = 2048;

}  // namespace

bool ParseHttpUrl(std::wstring_view url, SHttpUrl& parsed, std::wstring& error) {
  SUrlParts parts;
  if (!CrackHttpUrl(url, parts) || parts.host.empty() || parts.host.size() > kMaxHostLength ||
      parts.path.size() > kMaxPathLength || parts.query.size() > kMaxPathLength) {
    error = kParseError;
    return false;
  }
  parsed.host = std::move(parts.host);
  parsed.pathAndQuery = std::move(parts.path) + parts.query;
  if (parsed.pathAndQuery.empty() || parsed.pathAndQuery.front() != L'/') parsed.pathAndQuery.insert(0, L"/");
  parsed.port = parts.port;
  parsed.secure = parts.secure;
  return true;
}

}  // namespace net
