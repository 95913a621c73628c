#pragma once
// Message text of an OS error code, for error sentences shown to the user.

#include <cstdint>
#include <string>

namespace net {

// The system's text for `code` (on Windows WinHTTP's own codes included),
// without trailing line breaks; "Unknown WinHTTP error." when there is none.
std::wstring SystemErrorText(std::uint32_t code);

}  // namespace net
