#pragma once
// Files in the game folder that are never orphans, whatever the update list
// says: the player's own settings, logs, screenshots and chat logs, and the
// launcher's own files and temporaries.

#include <string>
#include <string_view>

namespace patch {

// The form in which game-relative paths are compared, identical on every
// system: every "\" turned into "/" and every character folded with
// text::FoldLetterCase, so names Windows's file systems take as one compare
// equal (a listed "Ä.txt" is the file "ä.txt" on disk). This is also the form
// the orphan sample shows; it differs from plain lower case only for a few
// letters ("ı" shows as "i", "ς" as "σ").
std::wstring ComparablePath(std::wstring_view relativePath);

// Orders comparable paths by code point on every system (UTF-16 on Windows
// would otherwise put characters past U+FFFF before U+E000-U+FFFF).
bool ComesFirst(std::wstring_view left, std::wstring_view right);

// True when the path (relative to the game folder, any case, either
// separator) must be left alone. An empty path is protected.
bool IsProtectedPath(std::wstring_view relativePath);

}  // namespace patch
