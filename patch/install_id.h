#pragma once
// A random, persistent identifier kept in the game folder itself, so that two
// installations of the launcher tell themselves apart (single-instance name,
// per-install data folder).

#include <string>
#include <string_view>

namespace patch {

inline constexpr std::wstring_view kInstallIdFileName = L"install.id";

// Reads "install.id" from the game folder (surrounding blanks, tabs, CR and LF
// trimmed) and, when it does not hold exactly 32 lower-case hexadecimal
// characters, writes a new random one in its place. False with `errorText`
// only when the folder is missing, no identifier can be generated or the
// file cannot be written.
bool EnsureInstallId(const std::wstring& gameFolder, std::wstring& id, std::wstring& errorText);

}  // namespace patch
