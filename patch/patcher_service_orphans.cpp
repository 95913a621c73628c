// Orphan scan and removal of the patcher service: the free functions applied
// to the service's game folder. No actor-owned state is touched.
#include <string>

#include "log/log.h"
#include "patch/patcher_service.h"
#include "patch/protected_paths.h"
#include "platform/path_text.h"

namespace patch {
namespace {

std::wstring NormalFullPath(const std::wstring& path) {
  return ComparablePath(platform::FromPath(platform::ToPath(path).lexically_normal()));
}

// The launcher's own file relative to the game folder when it lives there,
// else empty. Compared in comparable form, as Windows ignores case.
std::wstring LauncherRelativePath(const SServiceFolders& folders) {
  if (folders.gameFolder.empty() || folders.launcherPath.empty()) return {};
  std::wstring folder = NormalFullPath(folders.gameFolder);
  if (!folder.ends_with(L'/')) folder += L'/';
  const std::wstring launcher = NormalFullPath(folders.launcherPath);
  return launcher.starts_with(folder) ? launcher.substr(folder.size()) : std::wstring();
}

}  // namespace

bool CPatcherService::ScanOrphans(const SManifest& manifest, std::size_t sampleLimit, SOrphanScan& scan,
                                  std::wstring& errorText) const {
  return patch::ScanOrphans(folders_.gameFolder, manifest, sampleLimit, LauncherRelativePath(folders_), scan,
                            errorText);
}

SOrphanRemoval CPatcherService::RemoveOrphans(const std::vector<std::wstring>& orphans) const {
  const SOrphanRemoval removal = patch::RemoveOrphans(folders_.gameFolder, orphans);
  logging::LogInfo(L"patch", L"removed " + std::to_wstring(removal.removedFiles) + L" orphan files (" +
                                 std::to_wstring(removal.removedBytes) + L" B), " +
                                 std::to_wstring(removal.failedFiles) + L" could not be removed");
  return removal;
}

}  // namespace patch
