#pragma once
// The user's default locale name, which picks the interface language.

#include <optional>
#include <string>

namespace platform {

// Windows: GetUserDefaultLocaleName ("ar-SA"). Linux: the first non-empty of
// LC_ALL, LC_MESSAGES and LANG ("ar_SA.UTF-8"). No value when none can be had.
std::optional<std::wstring> UserDefaultLocaleName();

}  // namespace platform
