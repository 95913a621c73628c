#include <windows.h>
#include <winhttp.h>

#include "net/http_url.h"

namespace net {

bool CrackHttpUrl(std::wstring_view url, SUrlParts& parts) {
  const std::wstring text(url);
  // Lengths of -1 ask for pointers into `text` instead of copies.
  URL_COMPONENTS components{};
  components.dwStructSize = sizeof(components);
  components.dwSchemeLength = static_cast<DWORD>(-1);
  components.dwHostNameLength = static_cast<DWORD>(-1);
  components.dwUrlPathLength = static_cast<DWORD>(-1);
  components.dwExtraInfoLength = static_cast<DWORD>(-1);
  if (!WinHttpCrackUrl(text.c_str(), 0, 0, &components)) return false;
  if (components.nScheme != INTERNET_SCHEME_HTTP && components.nScheme != INTERNET_SCHEME_HTTPS) return false;
  const auto piece = [](const wchar_t* start, DWORD length) {
    return start ? std::wstring(start, length) : std::wstring();
  };
  parts.secure = components.nScheme == INTERNET_SCHEME_HTTPS;
  parts.host = piece(components.lpszHostName, components.dwHostNameLength);
  parts.port = components.nPort;
  parts.path = piece(components.lpszUrlPath, components.dwUrlPathLength);
  parts.query = piece(components.lpszExtraInfo, components.dwExtraInfoLength);
  // Some WinHTTP versions leave the query of a URL without a path in the host.
  if (const auto mark = parts.host.find_first_of(L"?#"); mark != std::wstring::npos) {
    parts.query.insert(0, parts.host.substr(mark));
    parts.host.resize(mark);
  }
  return true;
}

}  // namespace net
