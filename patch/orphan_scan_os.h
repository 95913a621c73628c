#pragma once
// The file-system half of the orphan scan, one twin per OS. Both sides refuse
// to pass through links (symbolic links, junctions), so neither the walk nor
// a deletion can reach outside the game folder.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace patch {

using GameFileVisitor = std::function<void(std::wstring_view relativePath, std::uint64_t size)>;

// Calls `visit` for every regular file below the non-empty `folder`, with its
// path relative to the folder (OS separators) and its size, in walk order.
// Folders that cannot be opened are skipped; links are neither entered nor
// reported.
void VisitGameFiles(const std::wstring& folder, const GameFileVisitor& visit);

// One file or folder of a folder being walked.
struct SWalkEntry {
  std::wstring name;
  bool folder = false;
  std::uint64_t size = 0;
};

// Walk order, the same on every system whatever order the OS lists names in:
// the entries of each folder sorted by comparable name (then by name), each
// folder walked where it falls. The counting form's sample, the first orphans
// found, is then the same list everywhere.
void SortForWalk(std::vector<SWalkEntry>& entries);

// Deletes the regular file at `relativePath` ("/" or "\" separated, already
// judged removable) below the non-empty `folder`, matching each name without
// regard to case. Fails, touching nothing, when a folder on the way is a link
// or the target is not a regular file. `size` receives the file's size.
bool DeleteGameFile(const std::wstring& folder, std::wstring_view relativePath, std::uint64_t& size);

}  // namespace patch
