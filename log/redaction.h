#pragma once
// Masks the user's profile folder in log messages so a log can be shared
// without revealing the account name.

#include <string>
#include <string_view>

namespace logging {

// The masked form names the variable the profile folder comes from.
#ifdef _WIN32
inline constexpr std::wstring_view kProfileMask = L"%USERPROFILE%";
#else
inline constexpr std::wstring_view kProfileMask = L"$HOME";
#endif

// Replaces every occurrence of `path` in `text` by `mask`. Letter case is
// ignored, "\" and "/" are the same, trailing separators of `path` do not
// count, and an occurrence that runs on into a longer name ("Ann" inside
// "Anna" or "Ann.old") is left alone. An empty path masks nothing.
std::wstring RedactPath(std::wstring_view text, std::wstring_view path, std::wstring_view mask);

}  // namespace logging
