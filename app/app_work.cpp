// CApp's work on its two worker threads: synchronisation (with the page's
// resources), patch and repair, and orphan removal. Workers change the view
// only under its mutex and reach the window only by posting.
#include <chrono>
#include <utility>

#include "app/app_controller.h"
#include "app/game_launch.h"
#include "app/page_resources.h"
#include "app/progress_throttle.h"
#include "ui/media_registry.h"

namespace {

constexpr wchar_t kPreparingStatus[] = L"Preparing patch";
constexpr wchar_t kPatchFailedStatus[] = L"Patch failed";
constexpr wchar_t kStartingGameStatus[] = L"Starting game";
constexpr wchar_t kUpToDateStatus[] = L"Up to date";
constexpr wchar_t kGameNotStarted[] = L"Configured game executable could not be started.";
constexpr wchar_t kCompleteGameStarted[] = L"Patch complete. Game launch triggered.";
constexpr wchar_t kCompleteGameReady[] = L"Patch complete. The game is ready to launch.";
constexpr wchar_t kOrphansRemoved[] = L" unrecognised file(s) removed";
constexpr wchar_t kOrphansLeft[] = L" could not be removed";

}  // namespace

bool CApp::Admit(EWork work) {
  std::uint32_t idle = static_cast<std::uint32_t>(EWork::Idle);
  return busy_.compare_exchange_strong(idle, static_cast<std::uint32_t>(work));
}

void CApp::PostFromWorker(EAppMessage message) {
  if (window_ != nullptr && !shuttingDown_) window_->PostAppMessage(message);
}

void CApp::CloseFromWorker() {
  if (window_ != nullptr && !shuttingDown_) window_->PostClose();
}

bool CApp::GameIsRunning(std::wstring& executableName) {
  std::wstring ignoredError;
  return !IsGameNotRunning(executableName, ignoredError, config_);
}

void CApp::StartSync() {
  if (!Admit(EWork::Syncing)) return;
  syncThread_ = std::jthread([this](std::stop_token stop) { RunSync(std::move(stop)); });
}

void CApp::RunSync(std::stop_token stop) {
  const text::EPatcherLanguage language = service_.GetStateSnapshot().language;
  RefreshPageFiles(http_, service_, language, settings_.uiCacheFolder);
  RefreshPageDocument();
  bool maintenance = false;
  {
    const std::lock_guard lock(viewMutex_);
    maintenance = document_.maintenanceActive;
  }
  patch::SPatchView view;
  std::wstring error;
  const bool synced = service_.SyncPatchState(http_, maintenance, view, error);
  {
    const std::lock_guard lock(viewMutex_);
    view_.patch = view;
    if (synced) {
      view_.installed = view.installedBuild > 0;
      view_.autoPatch = view.patchNeeded;
    } else {
      notices_.push_back({ENoticeKind::Error, L"#connection_lost", error});
    }
  }
  busy_ = static_cast<std::uint32_t>(EWork::Idle);
  lastSyncEnd_ = settings_.tickCountMs();
  if (!synced || stop.stop_requested()) return;
  // A started self-update needs this launcher gone before it can replace it.
  if (view.launcherUpdating) {
    CloseFromWorker();
  } else {
    PostFromWorker(EAppMessage::SyncFinished);
  }
}

void CApp::RefreshPageDocument() {
  text::SLauncherUiDocument document;
  {
    const std::lock_guard lock(viewMutex_);
    document = document_;
  }
  // A document that cannot be had keeps the previous one, cover and all.
  if (!FetchUiDocument(http_, service_, document)) return;
  const std::wstring coverUrl = document.hasPatchNote ? document.patchNote.coverImage : std::wstring();
  std::wstring coverFile;
  {
    const std::lock_guard lock(viewMutex_);
    if (coverUrl == coverUrl_) coverFile = coverFile_;
  }
  // The same address is not fetched again while its file is registered.
  if (coverFile.empty() && !coverUrl.empty()) {
    coverFile = DownloadCover(http_, service_, coverUrl, settings_.uiCacheFolder);
    if (!coverFile.empty()) webview::RegisterMedia(webview::kCoverMediaPath, coverFile);
  }
  const std::lock_guard lock(viewMutex_);
  document_ = std::move(document);
  coverUrl_ = coverFile.empty() ? std::wstring() : coverUrl;
  coverFile_ = std::move(coverFile);
}

void CApp::StartPatchAsync(bool repair) { StartPatch(repair, patch::EPatchTrigger::User); }

void CApp::StartPatch(bool repair, patch::EPatchTrigger trigger) {
  if (!Admit(repair ? EWork::Repairing : EWork::Patching)) return;
  std::wstring running;
  if (GameIsRunning(running)) {
    busy_ = static_cast<std::uint32_t>(EWork::Idle);
    ShowNotice(strings_.Text(L"patch"), strings_.Text(L"close_game_before_patch") + L": " + running + L"\n" +
                                            strings_.Text(L"close_game_before_patch_detail"));
    PushState();
    return;
  }
  {
    const std::lock_guard lock(viewMutex_);
    view_.patch.phase = patch::EPatchPhase::Syncing;
    view_.patch.statusText = kPreparingStatus;
    view_.patch.errorText.clear();
    view_.patch.progress = 0.0f;
    view_.bytesDone = view_.bytesTotal = view_.filesDone = view_.filesTotal = 0;
    view_.currentFile.clear();
  }
  PushState();
  workThread_ = std::jthread(
      [this, repair, trigger](std::stop_token stop) { RunPatch(std::move(stop), repair, trigger); });
}

void CApp::RunPatch(std::stop_token stop, bool repair, patch::EPatchTrigger trigger) {
  CProgressThrottle throttle;
  const auto onProgress = [&](const patch::SPatchProgress& progress) {
    {
      const std::lock_guard lock(viewMutex_);
      view_.patch.phase = static_cast<patch::EPatchPhase>(progress.phase);
      view_.patch.progress = progress.fraction;
      view_.bytesDone = progress.bytesDone;
      view_.bytesTotal = progress.bytesTotal;
      view_.filesDone = progress.filesDone;
      view_.filesTotal = progress.filesTotal;
      view_.currentFile = progress.file;
      view_.autoPatch = false;
    }
    if (throttle.ShouldPost(progress.phase, progress.fraction, CProgressThrottle::Clock::now())) {
      PostFromWorker(EAppMessage::Progress);
    }
  };
  patch::SPatchOutcome outcome;
  std::wstring error;
  const bool patched = service_.RunPatch(http_, repair, trigger, onProgress, outcome, error);
  if (stop.stop_requested() || shuttingDown_) return;

  const bool startGame = patched && !repair && config_.startGameAfterPatch;
  std::wstring startError;
  const bool gameStarted = startGame && PrepareGameLaunch(startError, config_);
  if (patched) {
    RecordPatchSuccess(outcome, startGame, gameStarted, startError);
  } else {
    RecordPatchFailure(outcome, error);
  }
  busy_ = static_cast<std::uint32_t>(EWork::Idle);
  PostFromWorker(EAppMessage::WorkFinished);
  // The launcher's job is done once the game runs.
  if (gameStarted) CloseFromWorker();
}

void CApp::RecordPatchFailure(const patch::SPatchOutcome& outcome, const std::wstring& error) {
  const std::lock_guard lock(viewMutex_);
  view_.patch.phase = patch::EPatchPhase::ConnectionLost;
  view_.patch.statusText = kPatchFailedStatus;
  view_.patch.errorText = error;
  view_.installed = false;
  // A later synchronisation starts the patch again by itself.
  view_.autoPatch = true;
  // Files were applied and only known failures repeated: the player was told already.
  if (outcome.appliedCount > 0 && !outcome.newFailure) return;
  notices_.push_back({ENoticeKind::Error, L"#retry", error.empty() ? L"#connection_lost" : error});
}

void CApp::RecordPatchSuccess(const patch::SPatchOutcome& outcome, bool gameStartTried, bool gameStarted,
                              const std::wstring& startError) {
  const std::uint64_t installedBuild = service_.GetStateSnapshot().installedBuild;
  const std::lock_guard lock(viewMutex_);
  view_.orphans = outcome.orphanList;
  view_.orphanBytes = outcome.orphanBytes;
  view_.patch.installedBuild = installedBuild;
  view_.patch.phase = patch::EPatchPhase::UpToDate;
  view_.patch.progress = 1.0f;
  view_.patch.patchNeeded = false;
  view_.installed = true;
  view_.autoPatch = false;
  view_.patch.statusText = gameStarted ? kStartingGameStatus : kUpToDateStatus;
  if (gameStartTried && !gameStarted) {
    notices_.push_back({ENoticeKind::Error, L"#start_game", startError.empty() ? kGameNotStarted : startError});
  }
  notices_.push_back({ENoticeKind::Success, L"#complete", gameStarted ? kCompleteGameStarted : kCompleteGameReady});
}

void CApp::StartRemoveOrphans() {
  if (!Admit(EWork::RemovingOrphans)) return;
  std::wstring running;
  if (GameIsRunning(running)) {
    busy_ = static_cast<std::uint32_t>(EWork::Idle);
    ShowNotice(strings_.Text(L"repair"), strings_.Text(L"close_game_before_patch") + L": " + running);
    PushState();
    return;
  }
  workThread_ = std::jthread([this](std::stop_token stop) { RunRemoveOrphans(std::move(stop)); });
}

void CApp::RunRemoveOrphans(std::stop_token stop) {
  std::vector<std::wstring> orphans;
  {
    const std::lock_guard lock(viewMutex_);
    orphans = view_.orphans;
  }
  const patch::SOrphanRemoval removal = service_.RemoveOrphans(orphans);
  if (stop.stop_requested() || shuttingDown_) return;
  std::wstring message = std::to_wstring(removal.removedFiles) + kOrphansRemoved;
  if (removal.failedFiles > 0) message += L", " + std::to_wstring(removal.failedFiles) + kOrphansLeft;
  {
    const std::lock_guard lock(viewMutex_);
    notices_.push_back({ENoticeKind::Success, L"#repair", std::move(message)});
    view_.orphans.clear();
    view_.orphanBytes = 0;
  }
  busy_ = static_cast<std::uint32_t>(EWork::Idle);
  PostFromWorker(EAppMessage::WorkFinished);
}
