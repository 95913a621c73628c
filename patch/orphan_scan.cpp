#include "patch/orphan_scan.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "patch/orphan_scan_os.h"
#include "patch/protected_paths.h"
#include "patch/relative_path.h"

namespace patch {
namespace {

constexpr wchar_t kNoUsableFiles[] = L"The update list contains no usable files.";

bool IsSeparator(wchar_t unit) { return unit == L'/' || unit == L'\\'; }

bool IsDriveLetter(wchar_t unit) { return (unit >= L'A' && unit <= L'Z') || (unit >= L'a' && unit <= L'z'); }

// "C:x" is relative to the current folder of drive C, not to the game folder.
bool StartsWithDrive(std::wstring_view path) {
  return path.size() >= 2 && IsDriveLetter(path[0]) && path[1] == L':';
}

bool HasDotComponent(std::wstring_view path) {
  std::size_t start = 0;
  for (std::size_t i = 0; i <= path.size(); ++i) {
    if (i < path.size() && !IsSeparator(path[i])) continue;
    const std::wstring_view name = path.substr(start, i - start);
    if (name == L"." || name == L"..") return true;
    start = i + 1;
  }
  return false;
}

// The list's paths in comparable form; entries the relative-path rule
// refuses are left out.
std::unordered_set<std::wstring> WantedPaths(const SManifest& manifest) {
  std::unordered_set<std::wstring> wanted;
  wanted.reserve(manifest.files.size());
  std::wstring normalised;
  for (const SManifestEntry& entry : manifest.files) {
    if (ValidateRelativePath(entry.path, normalised)) wanted.insert(ComparablePath(normalised));
  }
  return wanted;
}

}  // namespace

void SortForWalk(std::vector<SWalkEntry>& entries) {
  std::vector<std::pair<std::wstring, SWalkEntry>> keyed;
  keyed.reserve(entries.size());
  for (SWalkEntry& entry : entries) keyed.emplace_back(ComparablePath(entry.name), std::move(entry));
  std::ranges::sort(keyed, [](const auto& left, const auto& right) {
    if (left.first != right.first) return ComesFirst(left.first, right.first);
    return ComesFirst(left.second.name, right.second.name);
  });
  for (std::size_t i = 0; i < entries.size(); ++i) entries[i] = std::move(keyed[i].second);
}

bool ScanOrphans(const std::wstring& gameFolder, const SManifest& manifest, std::size_t sampleLimit,
                 std::wstring_view excludedRelativePath, SOrphanScan& scan, std::wstring& errorText) {
  scan = {};
  errorText.clear();
  const std::unordered_set<std::wstring> wanted = WantedPaths(manifest);
  if (wanted.empty()) {
    errorText = kNoUsableFiles;
    return false;
  }
  if (gameFolder.empty()) return true;

  std::wstring excluded;
  if (ValidateRelativePath(excludedRelativePath, excluded)) excluded = ComparablePath(excluded);

  VisitGameFiles(gameFolder, [&](std::wstring_view relativePath, std::uint64_t size) {
    std::wstring path = ComparablePath(relativePath);
    if (wanted.contains(path) || path == excluded || IsProtectedPath(path)) return;
    ++scan.orphanFiles;
    scan.orphanBytes += size;
    if (scan.orphanSample.size() < sampleLimit) scan.orphanSample.push_back(std::move(path));
  });
  std::ranges::sort(scan.orphanSample, ComesFirst);
  return true;
}

bool IsRemovableOrphanPath(std::wstring_view relativePath) {
  if (relativePath.empty() || relativePath.find(L'\0') != std::wstring_view::npos) return false;
  if (IsSeparator(relativePath.front()) || StartsWithDrive(relativePath)) return false;
  // A trailing separator names a folder; removal deletes files only.
  if (IsSeparator(relativePath.back())) return false;
  return !HasDotComponent(relativePath) && !IsProtectedPath(relativePath);
}

SOrphanRemoval RemoveOrphans(const std::wstring& gameFolder, const std::vector<std::wstring>& orphans) {
  SOrphanRemoval removal;
  for (const std::wstring& orphan : orphans) {
    std::uint64_t size = 0;
    if (!gameFolder.empty() && IsRemovableOrphanPath(orphan) && DeleteGameFile(gameFolder, orphan, size)) {
      ++removal.removedFiles;
      removal.removedBytes += size;
    } else {
      ++removal.failedFiles;
    }
  }
  return removal;
}

}  // namespace patch
