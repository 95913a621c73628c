#pragma once
// What the page's private host answers, shared by both window shells: the
// page, its font and pictures from the program's embedded resources, the
// cover picture from the file the controller registered, and "404 Not Found"
// for everything else. A shell only copies the answer into its engine's
// response (WebView2: a memory stream and the header text; WebKitGTK: a
// stream and the headers split into lines).

#include <cstdint>
#include <string_view>
#include <vector>

#include "ui/page_origin.h"

namespace webview {

struct SAssetResponse {
  int statusCode = 404;
  std::wstring_view reasonPhrase = L"Not Found";
  // Header lines, each ending "\r\n".
  std::wstring_view headers = L"Content-Length: 0\r\n";
  // The embedded resource that answered; 0 for a media file or a 404.
  int resourceId = 0;
  // A fresh copy of the body, never empty when statusCode is 200.
  std::vector<std::uint8_t> body;
};

// The path `uri` asks for: from the "/" that ends `origin` up to the first
// "?" or "#"; empty when `uri` is not on `origin`.
std::wstring_view PagePath(std::wstring_view uri, std::wstring_view origin);

// The answer to a request for `uri`. Never fails: every fault is a 404.
SAssetResponse ResolveAssetRequest(std::wstring_view uri, std::wstring_view origin = PageOrigin());

}  // namespace webview
