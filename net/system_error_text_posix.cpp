#include "net/system_error_text.h"

#include <cstring>

#include "text/utf.h"

namespace net {
namespace {

constexpr wchar_t kUnknownError[] = L"Unknown WinHTTP error.";

}  // namespace

std::wstring SystemErrorText(std::uint32_t code) {
  char buffer[256] = {};
  // GNU strerror_r returns the message, which may or may not live in `buffer`.
  const char* message = strerror_r(static_cast<int>(code), buffer, sizeof(buffer));
  const std::wstring text = message ? text::Utf8ToWide(message) : std::wstring();
  return text.empty() ? kUnknownError : text;
}

}  // namespace net
