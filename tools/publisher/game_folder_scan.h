#pragma once
// The game folder as it will be published: every regular file with the path
// the update list gives it, and the files that cannot be published with the
// reason why.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace publisher {

struct SGameFile {
  std::wstring path;  // relative, "/" separators, as the launcher will store it
  std::filesystem::path source;
  std::uint64_t size = 0;
  std::wstring sha256;  // filled in by hashing
  // Large files only, also filled in by hashing: the chunk index and its digest.
  std::string chunkIndex;
  std::wstring chunkIndexSha256;
};

struct SSkippedFile {
  std::wstring path;  // for display: unreadable name bytes shown as "?"
  std::wstring reason;
};

struct SFolderScan {
  std::vector<SGameFile> files;  // sorted by the UTF-8 bytes of their paths
  std::vector<SSkippedFile> skipped;
  // Paths that differ only in letter case: one file on players' machines.
  std::vector<std::wstring> caseClashes;
};

// Walks `folder`. Links to files are published with their target's bytes;
// links to folders are not followed. Skipped: names that are not valid
// Unicode, names Windows cannot store, paths the launcher's relative-path rule
// would read differently, and anything that is not a regular file. False with
// a sentence only when the walk itself fails.
bool ScanGameFolder(const std::filesystem::path& folder, SFolderScan& scan, std::wstring& error);

// True when Windows can store a file or folder of this name.
bool IsWindowsStorableName(std::wstring_view name);

}  // namespace publisher
