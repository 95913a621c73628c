#pragma once
// Files in the game folder that are never orphans, whatever the update list
// says: the player's own settings, logs, screenshots and chat logs, and the
// launcher's own files and temporaries.

#include <string>
#include <string_view>

namespace patch {

// The form in which game-relative paths are compared: every "\" turned into
// "/" and every character lower-cased.
std::wstring ComparablePath(std::wstring_view relativePath);

// True when the path (relative to the game folder, any case, either
// separator) must be left alone. An empty path is protected.
bool IsProtectedPath(std::wstring_view relativePath);

}  // namespace patch
