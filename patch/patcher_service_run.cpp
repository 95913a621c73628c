// The patch and repair runs the controller starts: the same fetch as a
// synchronisation, then the whole list applied.
#include <utility>

#include "log/log.h"
#include "net/http_client.h"
#include "patch/patcher_service.h"

namespace patch {

namespace {

// What the finished run left behind that the list does not name, in full, so
// the controller can offer to remove it.
void RecordOrphans(const CPatcherService& service, const SManifest& manifest, SPatchOutcome& outcome) {
  SOrphanScan scan;
  std::wstring ignoredError;  // the list had usable files, or the run would have stopped
  service.ScanOrphans(manifest, kUnlimitedOrphanSample, scan, ignoredError);
  outcome.orphanFiles = scan.orphanFiles;
  outcome.orphanBytes = scan.orphanBytes;
  outcome.orphanList = std::move(scan.orphanSample);
}

}  // namespace

bool CPatcherService::RunPatch(const net::CHttpClient& http, bool repair, EPatchTrigger trigger,
                               const ProgressCallback& progress, SPatchOutcome& outcome, std::wstring& error) {
  outcome = SPatchOutcome{};
  // A user's retry is never blocked by earlier back-offs or mismatches; an
  // automatic retry keeps them so a failing host is not hammered.
  if (trigger == EPatchTrigger::User) ForgetBlobFailures();

  SManifest manifest;
  std::wstring fingerprint;
  if (!FetchManifest(http, manifest, &fingerprint, error)) {
    logging::LogError(L"manifest", error);
    return false;
  }
  if (manifest.files.empty()) {
    error = L"The update list contains no usable files.";
    return false;
  }

  const bool applied = ApplyEntries(http, manifest, repair, progress, outcome, error);
  // Only a release whose every file made it is recorded as installed: a file
  // left behind must still be found missing or wrong by the next check.
  const bool complete = applied && outcome.failedCount == 0;
  if (complete) {
    MarkInstalledAt(manifest, fingerprint);
    RecordOrphans(*this, manifest, outcome);
    error.clear();
  }
  PersistIntegrityCache();
  return complete;
}

}  // namespace patch
