#pragma once
// The file-system half of the orphan scan, one twin per OS. Both sides refuse
// to pass through links (symbolic links, junctions), so neither the walk nor
// a deletion can reach outside the game folder.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace patch {

using GameFileVisitor = std::function<void(std::wstring_view relativePath, std::uint64_t size)>;

// Calls `visit` for every regular file below the non-empty `folder`, with its
// path relative to the folder (OS separators) and its size. Folders that
// cannot be opened are skipped; links are neither entered nor reported.
void VisitGameFiles(const std::wstring& folder, const GameFileVisitor& visit);

// Deletes the regular file at `relativePath` ("/" or "\" separated, already
// judged removable) below the non-empty `folder`, matching each name without
// regard to case. Fails, touching nothing, when a folder on the way is a link
// or the target is not a regular file. `size` receives the file's size.
bool DeleteGameFile(const std::wstring& folder, std::wstring_view relativePath, std::uint64_t& size);

}  // namespace patch
