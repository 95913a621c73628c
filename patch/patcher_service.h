#pragma once
// The patch engine. Its mutable state (the patch state record and the
// integrity cache) is touched only on its update actor; every accessor below
// posts a closure there and waits for it, so callers on any thread get
// consistent copies and never share the live record.

#include <cstdint>
#include <functional>
#include <string>

#include "app/launcher_config.h"
#include "patch/integrity_cache.h"
#include "patch/manifest.h"
#include "patch/patch_state.h"
#include "patch/update_actor.h"

namespace patch {

// Where the service keeps its files. Tests pass temporary folders.
struct SServiceFolders {
  std::wstring runtimeFolder;     // "launcher.state", "integrity.cache"
  std::wstring legacyDataFolder;  // earlier launchers' data, read only; empty when unknown
};

// RuntimeDirectory() and LegacyDataDirectory().
SServiceFolders DefaultServiceFolders();

class CPatcherService {
 public:
  CPatcherService(const LauncherConfig& config, SServiceFolders folders);
  ~CPatcherService();

  CPatcherService(const CPatcherService&) = delete;
  CPatcherService& operator=(const CPatcherService&) = delete;

  // Starts the actor and loads the state file, falling back to the legacy
  // copy. A missing file is a first run: defaults, true, empty errorText.
  bool InitializeState(std::wstring& errorText);
  // Rewrites the state file, then the integrity cache. Fails with "Could not
  // save local patch state." or "Could not write local patch state.".
  bool SaveState(std::wstring& errorText);

  SPatchState GetStateSnapshot();
  // Runs `mutation` on the live record. Does not save.
  void MutateState(const std::function<void(SPatchState&)>& mutation);
  // Does not save.
  void SetLanguage(text::EPatcherLanguage language);
  // Raises the channel's rollback floor to `version`; it never goes down.
  // "beta" in any case picks the beta floor, anything else the stable one.
  void RecordSeenVersion(const std::wstring& channel, std::uint64_t version);
  std::uint64_t SeenVersionForChannel(const std::wstring& channel);
  // Records a fully applied or adopted release and saves; a failed save is
  // ignored because the live record keeps the values for the next one.
  void MarkInstalledAt(const SManifest& manifest, const std::wstring& fingerprint);

  // Integrity cache, on the actor. The stored time is the file's current
  // last-write time, 0 when it cannot be read.
  bool LookupCachedHashOnActor(const std::wstring& fullPath, std::uint64_t size, std::int64_t mtime,
                               std::wstring& sha256);
  void StoreCachedHashOnActor(const std::wstring& fullPath, std::uint64_t size, const std::wstring& sha256);
  void PersistIntegrityCache();

 private:
  void LoadStateOnActor();
  bool SaveStateOnActor(std::wstring& errorText);
  text::EPatcherLanguage DetectLanguage() const;

  const LauncherConfig& config_;
  const SServiceFolders folders_;
  SPatchState state_;
  CIntegrityCache integrityCache_;
  // Declared last so it is stopped before the state its tasks touch goes away.
  CUpdateActor actor_;
};

}  // namespace patch
