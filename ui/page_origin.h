#pragma once
// Where the page lives: a private origin that only the launcher answers. The
// Windows shell serves it over https on a host under the reserved ".invalid"
// domain; WebKitGTK cannot take over https, so the Linux shell serves the
// same host name on a scheme of its own. Everything on the page that names
// its own host (the cover picture's address) is built from this text.

#include <string_view>

namespace webview {

// Scheme, "://", the private host name and "/".
std::wstring_view PageOrigin();

// The private host name, shared by both shells.
inline constexpr std::wstring_view kPageHostName = L"launcher.vardeni.invalid";

}  // namespace webview
