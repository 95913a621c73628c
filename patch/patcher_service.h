#pragma once
// The patch engine. Its mutable state (the patch state record and the
// integrity cache) is touched only on its update actor; every accessor below
// posts a closure there and waits for it, so callers on any thread get
// consistent copies and never share the live record.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "app/launcher_config.h"
#include "patch/blob_failures.h"
#include "patch/integrity_cache.h"
#include "patch/manifest.h"
#include "patch/orphan_scan.h"
#include "patch/patch_progress.h"
#include "patch/patch_state.h"
#include "patch/patch_view.h"
#include "patch/update_actor.h"
#include "platform/file_time.h"

namespace net {
class CHttpClient;
}

namespace patch {

// Where the service keeps its files. Tests pass temporary folders.
struct SServiceFolders {
  std::wstring runtimeFolder;     // "launcher.state", "integrity.cache", "staging"
  std::wstring legacyDataFolder;  // earlier launchers' data, read only; empty when unknown
  std::wstring gameFolder;        // the folder kept identical to the update list
  std::wstring launcherPath;      // the running launcher's own file: never a patch target
};

// RuntimeDirectory(), LegacyDataDirectory(), the resolved game folder and ModulePath().
SServiceFolders DefaultServiceFolders();

// Who asked for a patch run.
enum class EPatchTrigger { User, Automatic };

// One file of a batched integrity-cache lookup.
struct SCachedHashQuery {
  const std::wstring* fullPath = nullptr;
  bool stamped = false;  // its size and last-write time could be read
  platform::SFileStamp stamp;
  bool cached = false;  // the cache vouches for `sha256` at that stamp
  std::wstring sha256;
};

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
  // Many lookups in one trip to the actor; each file's size and time are read
  // on the calling thread first.
  void LookupCachedHashesOnActor(std::vector<SCachedHashQuery>& queries);
  void PersistIntegrityCache();

  // True when the file at `fullPath` has the entry's size and SHA-256, trusting
  // the integrity cache while size and last-write time are unchanged. Fails
  // with "Target file is missing.", "File size verification failed.",
  // "SHA-256 verification failed." or a hashing error.
  bool VerifyEntryIntegrity(const std::wstring& fullPath, const SManifestEntry& entry, std::wstring& error);

  // Blob failure records, keyed by SHA-256; the tick count is read on the
  // calling thread before the question goes to the actor.
  ERetryVerdict ConsultBlobFailure(const std::wstring& key);
  // True only the first time a failure of this key is recorded.
  bool RecordBlobFailure(const std::wstring& key, bool mismatch);
  void RecordBlobSuccess(const std::wstring& key);
  // A run the user started is never blocked by earlier back-offs or mismatches.
  void ForgetBlobFailures();

  // The game folder's orphan files against `manifest`, sparing protected names
  // and the running launcher: kOrphanSampleLimit gives the page's counting
  // form, kUnlimitedOrphanSample the full list that removal works from. Fails
  // only with "The update list contains no usable files.".
  bool ScanOrphans(const SManifest& manifest, std::size_t sampleLimit, SOrphanScan& scan,
                   std::wstring& errorText) const;
  // Deletes the listed files of a full scan from the game folder. Never fails
  // as a whole: files left in place are counted as failed.
  SOrphanRemoval RemoveOrphans(const std::vector<std::wstring>& orphans) const;

  // The absolute address of a file on the patch host; with `cacheBust` a
  // "?v=" (or "&v=") tick count defeats caches for the one mutable file.
  std::wstring BuildPatchUrl(const std::wstring& relativeName, bool cacheBust) const;
  // Reads the channel pointer, fetches that release's update list and
  // signature and accepts them against this install's rollback floor.
  // `fingerprint` may be null; when given it receives the list's SHA-256.
  bool FetchManifest(const net::CHttpClient& http, SManifest& manifest, std::wstring* fingerprint,
                     std::wstring& errorText);

  using ProgressCallback = std::function<void(const SPatchProgress&)>;
  // Brings the game folder into line with an accepted list. False only when
  // the whole run stops (not enough disk space); single files that fail are
  // counted in `outcome` and summarised in `error`.
  bool ApplyEntries(const net::CHttpClient& http, const SManifest& manifest, bool repair,
                    const ProgressCallback& progress, SPatchOutcome& outcome, std::wstring& error);

  // Checks the patch host and decides, without downloading game files, whether
  // the folder is up to date or needs a patch, giving a newer launcher the
  // chance to take over first. With `maintenance` an up-to-date game may still
  // be played but nothing may be patched. False (phase 7) when no update list
  // could be had.
  bool SyncPatchState(const net::CHttpClient& http, bool maintenance, SPatchView& status, std::wstring& errorText);

  // Starts the published launcher when it is newer than this one, was not
  // tried in an earlier run and was neither started nor failed in this one.
  bool MaybeStartLauncherSelfUpdate(const net::CHttpClient& http, const SManifest& manifest);
  // Downloads and verifies the published launcher, keeps it under
  // "launcher_update", records the attempt and starts it with
  // --apply-self-update "<this launcher>". True once it runs.
  bool StageAndLaunchUpdate(const net::CHttpClient& http, const SManifest& manifest, std::wstring& errorText);

  // A patch or repair run: fetches the current list, applies it and records
  // the release as installed when every file made it. A run the user started
  // first forgets earlier blob failures.
  bool RunPatch(const net::CHttpClient& http, bool repair, EPatchTrigger trigger, const ProgressCallback& progress,
                SPatchOutcome& outcome, std::wstring& error);

  const LauncherConfig& Config() const { return config_; }
  const SServiceFolders& Folders() const { return folders_; }

 private:
  void LoadStateOnActor();
  bool SaveStateOnActor(std::wstring& errorText);
  text::EPatcherLanguage DetectLanguage() const;

  const LauncherConfig& config_;
  const SServiceFolders folders_;
  SPatchState state_;
  CIntegrityCache integrityCache_;
  CBlobFailureTable blobFailures_;
  // This run's self-update memory: a started update, and the digest of the
  // launcher whose update failed. Not persisted.
  bool selfUpdateStarted_ = false;
  std::wstring failedLauncherSha256_;
  // Declared last so it is stopped before the state its tasks touch goes away.
  CUpdateActor actor_;
};

}  // namespace patch
