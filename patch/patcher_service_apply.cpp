// Applying an accepted update list to the game folder: plan which files need
// content, check the disk, fetch each distinct blob once on up to four
// workers, verify it and promote it onto every target that shares it.
#include <algorithm>
#include <atomic>
#include <optional>
#include <system_error>
#include <thread>
#include <unordered_set>
#include <vector>

#include "crypto/sha256.h"
#include "log/log.h"
#include "net/http_client.h"
#include "net/http_status.h"
#include "patch/apply_plan.h"
#include "patch/apply_progress.h"
#include "patch/apply_tally.h"
#include "patch/blob_path.h"
#include "patch/delta_fetch.h"
#include "patch/disk_space_check.h"
#include "patch/entry_verification.h"
#include "patch/patcher_service.h"
#include "patch/protected_paths.h"
#include "patch/staged_promotion.h"
#include "platform/file_replace.h"
#include "platform/file_time.h"
#include "platform/path_text.h"
#include "text/utf.h"

namespace patch {
namespace {

namespace fs = std::filesystem;

constexpr wchar_t kLogCategory[] = L"patch";
constexpr std::size_t kMaxFetchWorkers = 4;

constexpr std::uint32_t kPhaseDownloading = 4;
constexpr std::uint32_t kPhaseApplying = 5;
constexpr wchar_t kDownloadingStatus[] = L"Downloading";
constexpr wchar_t kApplyingStatus[] = L"Applying files";

constexpr wchar_t kRefusedReason[] = L"the published bytes did not match the signed hash";
constexpr wchar_t kWaitingReason[] = L"waiting before retrying";
constexpr wchar_t kIncompleteReason[] = L"the published update is incomplete";
constexpr wchar_t kMismatchReason[] = L"the downloaded content did not match its signed hash";
constexpr wchar_t kStoppedReason[] = L"the update of this file stopped: ";

fs::path TargetPath(const fs::path& gameFolder, const SManifestEntry& entry) {
  return gameFolder / platform::ToPath(entry.path);
}

std::uint64_t CurrentSize(const fs::path& path) {
  platform::SFileStamp stamp;
  return platform::ReadFileStamp(platform::FromPath(path), stamp) ? stamp.size : 0;
}

void RemoveQuietly(const fs::path& path) {
  std::error_code ignored;
  fs::remove(path, ignored);
}

// A status the host chose to answer with (not a transfer failure, not a
// server fault) means the blob is not there and will not appear by retrying.
bool IsMissingOnHost(std::uint32_t status) {
  return status >= 1 && status < net::kFirstServerErrorStatus && status != net::kStatusOk &&
         status != net::kStatusPartialContent;
}

// Called inside a catch block.
std::wstring CurrentExceptionText() {
  try {
    throw;
  } catch (const std::exception& surprise) {
    return text::Utf8ToWide(surprise.what());
  } catch (...) {
    return L"unknown error";
  }
}

// True for the second and later entries of one path. Paths are compared as
// the orphan scan compares them, so two entries differing only in letter case
// never race for one file (or one promotion temporary) on Windows.
class CRepeatedPaths {
 public:
  bool IsRepeat(const SManifestEntry& entry) {
    if (seen_.insert(ComparablePath(entry.path)).second) return false;
    logging::LogWarning(kLogCategory, L"ignored a repeated entry for " + entry.path + L" [" + entry.sha256 + L"]");
    return true;
  }

 private:
  std::unordered_set<std::wstring> seen_;
};

// The entries whose files need content, in list order. Entries that may not
// be fetched now are recorded as skipped. The files are checked on a small
// pool of threads while the entries are taken here in order.
std::vector<SManifestEntry> PlanFetches(CPatcherService& service, const SManifest& manifest, bool repair,
                                        CApplyProgress& progress, CApplyTally& tally) {
  const fs::path gameFolder = platform::ToPath(service.Folders().gameFolder);
  const fs::path launcherPath = platform::ToPath(service.Folders().launcherPath);
  CRepeatedPaths repeated;
  std::vector<const SManifestEntry*> candidates;
  std::vector<std::wstring> paths;
  for (const SManifestEntry& entry : manifest.files) {
    if (repeated.IsRepeat(entry)) continue;
    const fs::path target = TargetPath(gameFolder, entry);
    // The running launcher is replaced by its own self-update, never here.
    if (IsSameFile(target, launcherPath)) continue;
    candidates.push_back(&entry);
    paths.push_back(platform::FromPath(target));
  }
  std::optional<CEntryVerification> verification;
  if (!repair) verification.emplace(service, paths, candidates);

  std::vector<SManifestEntry> toFetch;
  std::size_t candidate = 0;
  for (std::size_t i = 0; i < manifest.files.size(); ++i) {
    const SManifestEntry& entry = manifest.files[i];
    progress.ReportPreparing(i, manifest.files.size(), entry.path);
    if (candidate == candidates.size() || candidates[candidate] != &entry) continue;
    const bool intact = verification && verification->Passed(candidate);
    ++candidate;
    if (intact) continue;
    switch (service.ConsultBlobFailure(entry.sha256)) {
      case ERetryVerdict::Refused:
        tally.RecordFailure(entry, kRefusedReason, false);
        break;
      case ERetryVerdict::Waiting:
        tally.RecordFailure(entry, kWaitingReason, false);
        break;
      case ERetryVerdict::Allowed:
        toFetch.push_back(entry);
        break;
    }
  }
  return toFetch;
}

std::vector<STargetSizes> TargetSizes(const fs::path& gameFolder, const std::vector<SManifestEntry>& entries) {
  std::vector<STargetSizes> sizes;
  sizes.reserve(entries.size());
  for (const SManifestEntry& entry : entries) sizes.push_back({entry.size, CurrentSize(TargetPath(gameFolder, entry))});
  return sizes;
}

// The fetch phase: workers take items from a shared counter until none are left.
class CFetchRun {
 public:
  CFetchRun(CPatcherService& service, const net::CHttpClient& http, const std::vector<SFetchItem>& items,
            CApplyProgress& progress, CApplyTally& tally)
      : service_(service),
        http_(http),
        items_(items),
        progress_(progress),
        tally_(tally),
        gameFolder_(platform::ToPath(service.Folders().gameFolder)),
        stagingRoot_(StagingRoot(platform::ToPath(service.Folders().runtimeFolder))) {}

  // The calling thread works too; all helpers are joined before this returns.
  void Run() {
    const std::size_t workers = std::max<std::size_t>(1, std::min(items_.size(), kMaxFetchWorkers));
    std::vector<std::jthread> helpers;
    try {
      for (std::size_t i = 1; i < workers; ++i) helpers.emplace_back([this] { Work(); });
    } catch (const std::system_error&) {
      // Fewer threads only means a slower run.
    }
    Work();
  }

 private:
  void Work() {
    for (;;) {
      const std::size_t index = nextItem_.fetch_add(1);
      if (index >= items_.size()) return;
      std::size_t settled = 0;
      try {
        ProcessItem(items_[index], settled);
      } catch (...) {
        // One item's surprise must not stop the others, and its targets still
        // count as not updated, or the release would be recorded as in place.
        const bool firstReport = service_.RecordBlobFailure(items_[index].sha256, false);
        FailTargets(items_[index], kStoppedReason + CurrentExceptionText(), firstReport, settled);
      }
    }
  }

  // `settled`: how many of the item's targets have been counted, applied or failed.
  void ProcessItem(const SFetchItem& item, std::size_t& settled) {
    const fs::path staged = StagedBlobPath(stagingRoot_, item.sha256);
    std::wstring reason;
    bool firstReport = false;
    if (staged.empty()) {
      // No blob can be published under a malformed digest.
      FailTargets(item, kIncompleteReason, false, settled);
    } else if (!ReuseStagedBlob(staged, item) && !RebuildByDelta(item, staged) &&
               !FetchBlob(item, staged, reason, firstReport)) {
      FailTargets(item, reason, firstReport, settled);
    } else {
      PromoteOntoTargets(item, staged, settled);
    }
    progress_.ReportFetch(kPhaseApplying, kApplyingStatus);
  }

  // A blob verified and staged by an earlier run is used as it is.
  bool ReuseStagedBlob(const fs::path& staged, const SFetchItem& item) {
    std::error_code ec;
    if (!fs::is_regular_file(staged, ec)) return false;
    std::wstring digest;
    std::wstring ignoredError;
    if (crypto::HashFileSha256(staged, digest, ignoredError) && digest == item.sha256) {
      // Counted as received, so the fraction still reaches the whole.
      progress_.AddBytes(item.size);
      return true;
    }
    RemoveQuietly(staged);
    return false;
  }

  // Rebuilds the blob from an old copy at one of its targets, fetching only
  // the chunks that copy lacks. On any surprise the whole blob is fetched
  // instead; that is logged, never reported as a failure.
  bool RebuildByDelta(const SFetchItem& item, const fs::path& staged) {
    const SManifestEntry& entry = item.targets.front();
    if (entry.chunkIndexSha256.empty()) return false;
    const fs::path oldCopy = OldCopy(item);
    // A whole download an earlier run left part-way is resumed instead.
    if (oldCopy.empty() || CurrentSize(PartialBlobPath(stagingRoot_, item.sha256)) > 0) return false;
    const fs::path rebuilt = platform::ToPath(platform::FromPath(staged) + L".delta");
    const SDeltaSource source{service_.BuildPatchUrl(BlobPathForHash(entry.chunkIndexSha256), false),
                              service_.BuildPatchUrl(BlobPathForHash(item.sha256), false), oldCopy};
    CDeltaCounter counter(progress_, item.size);
    std::wstring summary;
    if (FetchByDelta(http_, entry, source, rebuilt, counter, summary)) {
      std::uint32_t ignoredCode = 0;
      if (platform::MoveReplacingFile(rebuilt, staged, ignoredCode)) {
        logging::LogInfo(kLogCategory, entry.path + L" rebuilt from its old copy: " + summary);
        return true;
      }
      RemoveQuietly(rebuilt);
      summary = L"the rebuilt file could not be staged";
    }
    counter.FallBack();
    logging::LogInfo(kLogCategory, entry.path + L" is fetched whole: " + summary);
    return false;
  }

  // The first target that is a regular file with content; none is empty.
  fs::path OldCopy(const SFetchItem& item) const {
    for (const SManifestEntry& entry : item.targets) {
      const fs::path target = TargetPath(gameFolder_, entry);
      std::error_code ec;
      if (fs::is_regular_file(fs::symlink_status(target, ec)) && CurrentSize(target) > 0) return target;
    }
    return {};
  }

  // Keeps the run's byte counters to what a rebuild really fetches.
  class CDeltaCounter final : public CDeltaProgress {
   public:
    CDeltaCounter(CApplyProgress& progress, std::uint64_t wholeSize) : progress_(progress), wholeSize_(wholeSize) {}

    void Planned(std::uint64_t bytes) override {
      progress_.ExpectInstead(wholeSize_, bytes);
      planned_ = bytes;
    }
    void Fetched(std::uint64_t bytes) override {
      progress_.AddBytes(bytes);
      fetched_ += bytes;
      progress_.ReportFetch(kPhaseDownloading, kDownloadingStatus);
    }
    // The whole file comes on top of what the rebuild fetched.
    void FallBack() {
      if (planned_) progress_.ExpectInstead(*planned_, fetched_ + wholeSize_);
    }

   private:
    CApplyProgress& progress_;
    const std::uint64_t wholeSize_;
    std::optional<std::uint64_t> planned_;
    std::uint64_t fetched_ = 0;
  };

  // Downloads the blob onto its staged path and verifies it. On failure the
  // blob's failure is recorded and `reason` says why.
  bool FetchBlob(const SFetchItem& item, const fs::path& staged, std::wstring& reason, bool& firstReport) {
    std::uint64_t counted = 0;
    const net::SDownloadResult download =
        http_.DownloadFile(service_.BuildPatchUrl(BlobPathForHash(item.sha256), false), staged,
                           PartialBlobPath(stagingRoot_, item.sha256), item.size,
                           [&](std::uint64_t received, std::uint64_t) {
                             // A transfer that starts over counts its bytes again.
                             if (received > counted) progress_.AddBytes(received - counted);
                             counted = received;
                             progress_.ReportFetch(kPhaseDownloading, kDownloadingStatus);
                           });
    // More bytes than the signed size go on as a mismatch (no digest).
    if (!download.ok && !download.tooLarge) {
      const bool missing = IsMissingOnHost(download.status);
      reason = missing ? std::wstring(kIncompleteReason) : download.error;
      firstReport = service_.RecordBlobFailure(item.sha256, missing);
      return false;
    }

    if (!download.digestError.empty() || download.digest != item.sha256) {
      reason = download.digestError.empty() ? std::wstring(kMismatchReason) : download.digestError;
      RemoveQuietly(staged);
      firstReport = service_.RecordBlobFailure(item.sha256, false);
      return false;
    }
    return true;
  }

  // Every target but the last gets a copy; the last takes the blob itself.
  void PromoteOntoTargets(const SFetchItem& item, const fs::path& staged, std::size_t& settled) {
    bool allApplied = true;
    for (std::size_t i = 0; i < item.targets.size(); ++i, ++settled) {
      const SManifestEntry& entry = item.targets[i];
      const fs::path target = TargetPath(gameFolder_, entry);
      const bool last = i + 1 == item.targets.size();
      std::wstring error;
      const bool applied = PrepareStagedPromotion(staged, target, error) &&
                           (last ? TakeStagedBlob(staged, target, error) : PromoteStagedFile(staged, target, error));
      if (applied) {
        // The next verification of this file is then a cache hit.
        service_.StoreCachedHashOnActor(platform::FromPath(target), entry.size, entry.sha256);
        tally_.CountApplied();
        progress_.CountAppliedFile();
      } else {
        allApplied = false;
        const bool firstReport = service_.RecordBlobFailure(item.sha256, false);
        tally_.RecordFailure(entry, error, firstReport);
      }
    }
    if (allApplied) service_.RecordBlobSuccess(item.sha256);
  }

  // A plain rename; across volumes it fails and a copy-promotion stands in.
  static bool TakeStagedBlob(const fs::path& staged, const fs::path& target, std::wstring& error) {
    std::uint32_t ignoredCode = 0;
    if (platform::MoveReplacingFile(staged, target, ignoredCode)) return true;
    if (!PromoteStagedFile(staged, target, error)) return false;
    RemoveQuietly(staged);
    return true;
  }

  void FailTargets(const SFetchItem& item, const std::wstring& reason, bool firstReport, std::size_t& settled) {
    for (; settled < item.targets.size(); ++settled) tally_.RecordFailure(item.targets[settled], reason, firstReport);
  }

  CPatcherService& service_;
  const net::CHttpClient& http_;
  const std::vector<SFetchItem>& items_;
  CApplyProgress& progress_;
  CApplyTally& tally_;
  const fs::path gameFolder_;
  const fs::path stagingRoot_;
  std::atomic<std::size_t> nextItem_{0};
};

}  // namespace

bool CPatcherService::ApplyEntries(const net::CHttpClient& http, const SManifest& manifest, bool repair,
                                   const ProgressCallback& progress, SPatchOutcome& outcome, std::wstring& error) {
  error.clear();
  CApplyProgress reporter(progress);
  CApplyTally tally;

  const std::vector<SManifestEntry> toFetch = PlanFetches(*this, manifest, repair, reporter, tally);
  if (toFetch.empty()) {
    if (tally.failedCount() == 0) reporter.ReportUpToDate();
    tally.CopyInto(outcome);
    error = PatchSummaryText(outcome);
    return true;
  }

  const fs::path gameFolder = platform::ToPath(folders_.gameFolder);
  const fs::path stagingRoot = StagingRoot(platform::ToPath(folders_.runtimeFolder));
  // Made now so its volume can be asked about before anything is downloaded.
  std::error_code ignored;
  fs::create_directories(stagingRoot, ignored);
  if (!CheckDiskSpace(gameFolder, stagingRoot, TargetSizes(gameFolder, toFetch), error)) {
    tally.CopyInto(outcome);
    return false;
  }

  const std::vector<SFetchItem> items = GroupFetchItems(toFetch);
  logging::LogInfo(kLogCategory, std::to_wstring(items.size()) + L" file(s) to fetch" + (repair ? L" (repair)" : L""));
  std::uint64_t bytesTotal = 0;
  for (const SFetchItem& item : items) bytesTotal += item.size;
  reporter.BeginFetch(bytesTotal, toFetch.size());
  CFetchRun(*this, http, items, reporter, tally).Run();

  tally.CopyInto(outcome);
  const std::wstring counts =
      L"applied " + std::to_wstring(outcome.appliedCount) + L", skipped " + std::to_wstring(outcome.failedCount);
  if (outcome.failedCount != 0) {
    logging::LogWarning(kLogCategory, counts);
  } else {
    logging::LogInfo(kLogCategory, counts);
  }
  error = PatchSummaryText(outcome);
  return true;
}

}  // namespace patch
