#include "ui/media_registry.h"

#include <map>
#include <mutex>

namespace webview {
namespace {

struct SMediaRegistry {
  std::mutex mutex;
  std::map<std::wstring, std::wstring, std::less<>> files;
};

SMediaRegistry& Registry() {
  static SMediaRegistry registry;
  return registry;
}

}  // namespace

void RegisterMedia(std::wstring_view path, std::wstring filePath) {
  SMediaRegistry& registry = Registry();
  const std::lock_guard lock(registry.mutex);
  registry.files.insert_or_assign(std::wstring(path), std::move(filePath));
}

std::optional<std::wstring> FindMedia(std::wstring_view path) {
  SMediaRegistry& registry = Registry();
  const std::lock_guard lock(registry.mutex);
  const auto found = registry.files.find(path);
  if (found == registry.files.end()) return std::nullopt;
  return found->second;
}

}  // namespace webview
