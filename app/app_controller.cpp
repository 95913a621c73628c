// CApp's life on the UI thread: start-up and shut-down, the page host's
// callbacks, worker messages, the timer, and the page state rebuilt from the
// view and pushed when it changed.
#include "app/app_controller.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "app/paths.h"
#include "log/log.h"
#include "patch/orphan_scan.h"
#include "platform/path_text.h"
#include "platform/tick_count.h"
#include "ui/media_registry.h"
#include "ui/page_origin.h"

namespace {

constexpr std::wstring_view kWebProfileFolder = L"webview";
constexpr wchar_t kInitializingStatus[] = L"Initializing";
// The page hides a notice after this long; the snapshot drops it then too.
constexpr std::uint64_t kNoticeLifetimeMs = 8000;

struct SPhaseStatus {
  std::wstring_view key;
  std::wstring_view english;
};

SPhaseStatus PhaseStatus(patch::EPatchPhase phase) {
  using patch::EPatchPhase;
  switch (phase) {
    case EPatchPhase::UpToDate:
    case EPatchPhase::Done:
      return {L"up_to_date", L"Up to date"};
    case EPatchPhase::PatchAvailable:
      return {L"patch_available", L"Patch available"};
    case EPatchPhase::Preparing:
    case EPatchPhase::Applying:
      return {L"patch", L"Patch"};
    case EPatchPhase::ConnectionLost:
      return {L"connection_lost", L"Connection lost"};
    case EPatchPhase::Maintenance:
      return {L"maintenance", L"Maintenance"};
    default:
      return {L"syncing_patch_state", L"Syncing patch state"};
  }
}

// The page's address of the cover picture: the origin without its closing "/", then the media path.
std::wstring CoverPageUrl() {
  std::wstring_view origin = webview::PageOrigin();
  if (origin.ends_with(L'/')) origin.remove_suffix(1);
  return std::wstring(origin) + std::wstring(webview::kCoverMediaPath);
}

bool IsRegularFile(const std::wstring& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(platform::ToPath(path), error);
}

}  // namespace

SAppSettings DefaultAppSettings() {
  return {&CompiledLauncherConfig(), patch::DefaultServiceFolders(), ModuleDirectory(), UiCacheDirectory(),
          &platform::TickCountMs};
}

CApp::CApp(SAppSettings settings)
    : settings_(std::move(settings)),
      config_(*settings_.config),
      service_(config_, settings_.folders),
      http_(config_) {}

CApp::~CApp() { Shutdown(); }

bool CApp::Initialize(CAppWindow& window, std::wstring& errorText) {
  window_ = &window;
  shuttingDown_ = false;
  firstSyncPending_ = true;
  if (!CreateWebViewUi(errorText)) return false;
  if (!service_.InitializeState(errorText)) return false;
  language_ = service_.GetStateSnapshot().language;
  strings_.Load(language_, platform::ToPath(settings_.launcherFolder));
  service_.SetLanguage(language_);
  {
    const std::lock_guard lock(viewMutex_);
    view_.patch.phase = patch::EPatchPhase::Syncing;
    view_.patch.statusText = kInitializingStatus;
  }
  window.StartTimer(kTimerPeriodMs);
  StartSync();
  PushState();
  return true;
}

bool CApp::CreateWebViewUi(std::wstring& errorText) {
  const std::wstring profile =
      platform::FromPath(platform::ToPath(RuntimeDirectory()) / platform::ToPath(kWebProfileFolder));
  SPageCallbacks callbacks{
      [this](std::string_view message) { HandleWebMessage(message); },
      [this] { OnPageLoaded(); },
      [this](const std::wstring& text) { OnFatalPageError(text); },
  };
  pageCreated_ = window_->CreatePage(profile, std::move(callbacks), errorText);
  return pageCreated_;
}

void CApp::OnPageLoaded() {
  logging::LogInfo(L"webview", L"page loaded");
  // A (re)loaded page holds nothing yet: it gets the whole state at once.
  pageReady_ = true;
  lastPushed_.clear();
  PushState();
}

void CApp::OnFatalPageError(const std::wstring& errorText) {
  if (shuttingDown_ || window_ == nullptr) return;
  window_->ShowErrorBox(errorText);
  window_->PostClose();
}

void CApp::Shutdown() {
  shuttingDown_ = true;
  if (window_ != nullptr) {
    window_->StopTimer();
    if (pageCreated_) window_->ClosePage();
  }
  pageCreated_ = false;
  pageReady_ = false;
  // A worker may be deep in a download; it ends on its own and is waited for.
  for (std::jthread* worker : {&syncThread_, &workThread_}) {
    worker->request_stop();
    if (worker->joinable()) worker->join();
  }
  busy_ = 0;
  firstSyncPending_ = false;
  window_ = nullptr;
}

void CApp::OnAppMessage(EAppMessage message) {
  switch (message) {
    case EAppMessage::Refresh:
    case EAppMessage::Progress:
    case EAppMessage::WorkFinished:
      PushState();
      return;
    case EAppMessage::SyncFinished:
      break;
    default:
      return;
  }
  firstSyncPending_ = false;
  strings_.Load(service_.GetStateSnapshot().language, platform::ToPath(settings_.launcherFolder));
  PushState();
  bool autoPatch = false;
  {
    const std::lock_guard lock(viewMutex_);
    autoPatch = view_.autoPatch && view_.patch.phase == patch::EPatchPhase::PatchAvailable;
  }
  if (autoPatch && Busy() == EWork::Idle) StartPatch(false, patch::EPatchTrigger::Automatic);
}

void CApp::OnTimer() {
  const std::uint64_t now = settings_.tickCountMs();
  if (!firstSyncPending_ && Busy() == EWork::Idle && now - lastSyncEnd_ >= kIdleResyncMs) {
    lastSyncEnd_ = now;
    StartSync();
  }
  PushState();
}

void CApp::SetVisible(bool visible) {
  if (visible) StartSync();
}

void CApp::PushState() {
  model_ = RebuildModel();
  if (!pageReady_ || window_ == nullptr) return;
  std::string snapshot = BuildPageSnapshot(model_);
  if (snapshot == lastPushed_) return;
  window_->PostToPage(snapshot);
  lastPushed_ = std::move(snapshot);
}

void CApp::ShowNotice(std::wstring title, std::wstring message) {
  QueueNotice(ENoticeKind::Error, std::move(title), std::move(message));
}

void CApp::QueueNotice(ENoticeKind kind, std::wstring title, std::wstring message) {
  const std::lock_guard lock(viewMutex_);
  notices_.push_back({kind, std::move(title), std::move(message)});
}

std::wstring CApp::Localized(const std::wstring& text) const {
  return text.starts_with(L'#') ? strings_.Text(text.substr(1)) : text;
}

SPageModel CApp::RebuildModel() {
  SPageModel model;
  std::optional<SNotice> next;
  {
    const std::lock_guard lock(viewMutex_);
    // Notices wait for a page that can show them.
    if (pageReady_ && !notices_.empty()) {
      next = std::move(notices_.front());
      notices_.erase(notices_.begin());
    }
    const SView& view = view_;
    model.phase = static_cast<std::uint32_t>(view.patch.phase);
    model.progress = view.patch.progress;
    model.currentFile = view.currentFile;
    model.filesDone = view.filesDone;
    model.filesTotal = view.filesTotal;
    model.downloadedBytes = view.bytesDone;
    model.totalBytes = view.bytesTotal;
    model.orphanFiles = view.orphans.size();
    model.orphanBytes = view.orphanBytes;
    model.orphanSample.assign(view.orphans.begin(),
                              view.orphans.begin() + std::min(view.orphans.size(), patch::kOrphanSampleLimit));
    model.lastError = view.patch.errorText;
    if (view.patch.installedBuild > 0) model.version = std::to_wstring(view.patch.installedBuild);
    const bool idle = Busy() == EWork::Idle;
    model.canPatch = view.patch.patchNeeded && idle;
    model.canRepair = view.installed && idle;
    model.canPlay = idle && !view.patch.patchNeeded && view.patch.phase != patch::EPatchPhase::PatchAvailable &&
                    IsRegularFile(GameExecutablePath(config_));
    model.document = document_;
    if (document_.hasPatchNote && !coverFile_.empty()) model.coverImage = CoverPageUrl();
  }
  model.connecting = firstSyncPending_ && Busy() == EWork::Syncing;
  const SPhaseStatus status = PhaseStatus(static_cast<patch::EPatchPhase>(model.phase));
  model.status = strings_.Text(std::wstring(status.key), std::wstring(status.english));
  model.title = strings_.Text(L"app_title", config_.displayName);
  model.subtitle = strings_.Text(L"app_subtitle", config_.subtitle);
  model.patchLabel = strings_.Text(L"patch");
  model.playLabel = strings_.Text(L"start_game");
  model.language = language_;

  const std::uint64_t now = settings_.tickCountMs();
  if (next) {
    shownNotice_ = SPageNotice{static_cast<int>(next->kind), Localized(next->message)};
    noticeShownAt_ = now;
    // The snapshot has no room for the title; the log keeps it for support.
    logging::WriteLog(next->kind == ENoticeKind::Error ? logging::ELogLevel::Warning : logging::ELogLevel::Info,
                      L"notice", Localized(next->title) + L": " + shownNotice_->message);
  } else if (shownNotice_ && now - noticeShownAt_ >= kNoticeLifetimeMs) {
    shownNotice_.reset();
  }
  model.notice = shownNotice_;
  return model;
}
