#pragma once
// Environment variables and the per-user folders taken from them.

#include <string>
#include <string_view>

namespace platform {

// The variable's value; empty when it is unset (on Linux also when it is not valid UTF-8).
std::wstring EnvironmentVariable(std::wstring_view name);

// Base folder of per-user application data: "LOCALAPPDATA" on Windows; on
// Linux "$XDG_DATA_HOME" when it is an absolute path (the XDG rule ignores a
// relative one), else "$HOME/.local/share". Empty when none is available.
std::wstring LocalAppDataDirectory();

// Base folder of the page's downloaded resources, which must be the user's
// own: the temporary folder on Windows (it is per user there); on Linux, where
// /tmp is shared with every account, "$XDG_CACHE_HOME" when it is an absolute
// path, else "$HOME/.cache". Empty when none is available.
std::wstring UserCacheDirectory();

// The user's profile folder: "USERPROFILE" on Windows, "$HOME" on Linux; empty when unset.
std::wstring UserProfileDirectory();

}  // namespace platform
