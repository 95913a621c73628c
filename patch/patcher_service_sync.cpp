// Synchronisation: is the game folder the published release, or does it need
// a patch? Decided without downloading any game file.
#include <filesystem>

#include "log/log.h"
#include "net/http_client.h"
#include "patch/entry_verification.h"
#include "patch/patcher_service.h"
#include "platform/file_time.h"
#include "platform/path_text.h"

namespace patch {
namespace {

constexpr std::wstring_view kLogCategory = L"manifest";

// The integrity check's own query, which works at any path length.
bool IsRegularFile(const std::filesystem::path& path) {
  platform::SFileStamp ignored;
  return platform::ReadFileStamp(platform::FromPath(path), ignored);
}

std::filesystem::path EntryPath(const std::filesystem::path& gameFolder, const SManifestEntry& entry) {
  return gameFolder / platform::ToPath(entry.path);
}

// Stops at the first entry that is not a regular file.
bool AllEntriesPresent(const std::filesystem::path& gameFolder, const SManifest& manifest) {
  for (const SManifestEntry& entry : manifest.files) {
    if (!IsRegularFile(EntryPath(gameFolder, entry))) return false;
  }
  return true;
}

void ResetSyncFields(SPatchView& status) {
  status.phase = EPatchPhase::Syncing;
  status.installedBuild = 0;
  status.targetBuild = 0;
  status.fileCount = 0;
  status.progress = 0.0f;
  status.actionReady = false;
  status.patchNeeded = false;
  status.folderChecked = false;
  status.launcherUpdating = false;
  status.statusText = L"Syncing patch state";
  status.errorText.clear();
}

void SetUpToDate(SPatchView& status) {
  status.phase = EPatchPhase::UpToDate;
  status.progress = 1.0f;
  status.actionReady = true;
  status.patchNeeded = false;
  status.statusText = L"Up to date";
}

void SetPatchAvailable(SPatchView& status) {
  status.phase = EPatchPhase::PatchAvailable;
  status.progress = 0.0f;
  status.actionReady = true;
  status.patchNeeded = true;
  status.statusText = L"Patch available";
}

// An up-to-date game may still be played; nothing may be patched.
void ApplyMaintenance(SPatchView& status) {
  status.actionReady = status.phase == EPatchPhase::UpToDate;
  status.patchNeeded = false;
  status.folderChecked = false;
  status.phase = EPatchPhase::Maintenance;
  status.statusText = L"Maintenance";
}

}  // namespace

bool CPatcherService::SyncPatchState(const net::CHttpClient& http, bool maintenance, SPatchView& status,
                                     std::wstring& errorText) {
  ResetSyncFields(status);
  status.phase = maintenance ? EPatchPhase::Maintenance : EPatchPhase::Syncing;
  status.installedBuild = GetStateSnapshot().installedBuild;

  SManifest manifest;
  std::wstring fingerprint;
  if (!FetchManifest(http, manifest, &fingerprint, errorText)) {
    logging::LogError(kLogCategory, errorText);
    status.phase = EPatchPhase::ConnectionLost;
    status.errorText = errorText;
    return false;
  }
  logging::LogInfo(kLogCategory, L"verified build " + std::to_wstring(manifest.version) + L" (" +
                                     std::to_wstring(manifest.files.size()) + L" files)");
  status.targetBuild = manifest.version;
  status.fileCount = manifest.files.size();

  if (manifest.hasLauncher && MaybeStartLauncherSelfUpdate(http, manifest)) {
    status.launcherUpdating = true;
    status.statusText = L"Updating launcher";
    errorText.clear();
    return true;
  }

  status.folderChecked = true;
  const SPatchState state = GetStateSnapshot();
  const std::filesystem::path gameFolder = platform::ToPath(folders_.gameFolder);
  const bool gamePresent = IsRegularFile(gameFolder / platform::ToPath(config_.gameExecutable));
  const bool filesPresent = AllEntriesPresent(gameFolder, manifest);
  if (gamePresent && filesPresent && !state.manifestFingerprint.empty() && state.manifestFingerprint == fingerprint &&
      state.installedBuild == manifest.version) {
    SetUpToDate(status);
  } else if (!filesPresent) {
    SetPatchAvailable(status);
  } else {
    std::vector<std::wstring> paths;
    std::vector<const SManifestEntry*> entries;
    for (const SManifestEntry& entry : manifest.files) {
      paths.push_back(platform::FromPath(EntryPath(gameFolder, entry)));
      entries.push_back(&entry);
    }
    CEntryVerification verification(*this, paths, entries);
    bool allVerified = true;
    // The first file found wrong settles it; the rest of the work is dropped.
    for (std::size_t i = 0; allVerified && i < entries.size(); ++i) allVerified = verification.Passed(i);
    if (allVerified) {
      // The folder already holds this release (a fresh install beside a copied game, say).
      MarkInstalledAt(manifest, fingerprint);
      status.installedBuild = manifest.version;
      SetUpToDate(status);
    } else {
      SetPatchAvailable(status);
    }
  }

  if (maintenance) ApplyMaintenance(status);
  PersistIntegrityCache();
  errorText.clear();
  return true;
}

}  // namespace patch
