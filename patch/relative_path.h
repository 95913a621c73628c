#pragma once
// The one rule for a file path that must stay inside the game folder. Windows
// path rules apply on every platform, so a list judged on Linux is judged the
// same way it would be on the players' machines.

#include <string>
#include <string_view>

namespace patch {

// True when `text` names a file below the game folder. `normalised` then holds
// the lexically normalised path ("." dropped, "name/.." pairs collapsed,
// repeated separators merged) with "/" as the only separator; on refusal it is
// cleared. Refused: empty text or result, a drive ("C:") or network ("\\")
// root name, a leading separator, a ".." that survives normalisation, a NUL
// unit (the OS would cut the path there) and a path ending in a separator,
// "." or ".." (that names a folder, never a file).
bool ValidateRelativePath(std::wstring_view text, std::wstring& normalised);

}  // namespace patch
