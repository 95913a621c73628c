#include "patch/relative_path.h"

#include <vector>

namespace patch {
namespace {

bool IsSeparator(wchar_t unit) { return unit == L'/' || unit == L'\\'; }

bool IsDriveLetter(wchar_t unit) { return (unit >= L'A' && unit <= L'Z') || (unit >= L'a' && unit <= L'z'); }

// A root directory (leading separator), a network root name (two leading
// separators, already covered by the first) or a drive root name ("C:").
bool HasRoot(std::wstring_view path) {
  if (!path.empty() && IsSeparator(path.front())) return true;
  return path.size() >= 2 && IsDriveLetter(path[0]) && path[1] == L':';
}

// The names between separators; runs of separators yield no empty names.
std::vector<std::wstring_view> SplitNames(std::wstring_view path) {
  std::vector<std::wstring_view> names;
  std::size_t start = 0;
  for (std::size_t i = 0; i <= path.size(); ++i) {
    if (i == path.size() || IsSeparator(path[i])) {
      if (i > start) names.push_back(path.substr(start, i - start));
      start = i + 1;
    }
  }
  return names;
}

}  // namespace

bool ValidateRelativePath(std::wstring_view text, std::wstring& normalised) {
  normalised.clear();
  if (text.empty() || HasRoot(text) || text.find(L'\0') != std::wstring_view::npos) return false;
  if (IsSeparator(text.back())) return false;

  const std::vector<std::wstring_view> names = SplitNames(text);
  if (names.back() == L"." || names.back() == L"..") return false;

  std::vector<std::wstring_view> kept;
  for (std::wstring_view name : names) {
    if (name == L".") continue;
    if (name == L".." && !kept.empty() && kept.back() != L"..") {
      kept.pop_back();
      continue;
    }
    kept.push_back(name);
  }
  // Only leading ".." survive the collapse; each climbs out of the game folder.
  if (kept.empty() || kept.front() == L"..") return false;

  std::wstring joined;
  for (std::wstring_view name : kept) {
    if (!joined.empty()) joined += L'/';
    joined += name;
  }
  // Collapsing can bring a drive to the front: "a/../C:x" is "C:x".
  if (HasRoot(joined)) return false;
  normalised = std::move(joined);
  return true;
}

}  // namespace patch
