#include "patch/apply_plan.h"

#include <system_error>
#include <unordered_map>

namespace patch {
namespace {

std::filesystem::path Normalised(const std::filesystem::path& path) {
  std::error_code ec;
  std::filesystem::path absolute = std::filesystem::absolute(path, ec);
  if (ec) absolute = path;
  return absolute.lexically_normal().make_preferred();
}

}  // namespace

std::vector<SFetchItem> GroupFetchItems(const std::vector<SManifestEntry>& entries) {
  std::vector<SFetchItem> items;
  std::unordered_map<std::wstring, std::size_t> indexBySha;
  for (const SManifestEntry& entry : entries) {
    const auto [found, added] = indexBySha.try_emplace(entry.sha256, items.size());
    if (added) items.push_back({entry.sha256, entry.size, {}});
    items[found->second].targets.push_back(entry);
  }
  return items;
}

bool IsSameFile(const std::filesystem::path& a, const std::filesystem::path& b) {
  if (a.empty() || b.empty()) return false;
  std::error_code ec;
  if (std::filesystem::exists(a, ec) && std::filesystem::exists(b, ec)) {
    const bool same = std::filesystem::equivalent(a, b, ec);
    if (!ec) return same;
  }
  return Normalised(a) == Normalised(b);
}

}  // namespace patch
