#pragma once
// CApp, the launcher's controller: it owns the patch engine, the localised
// strings and the page's state, and decides what runs when. Long work runs
// on one of two worker threads (synchronisation; patch, repair and orphan
// removal); workers copy results into the view under its mutex and post a
// message, and only the UI thread rebuilds the page state and pushes it.
// Nothing here knows which window system hosts the page (CAppWindow).

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "app/app_window.h"
#include "app/launcher_config.h"
#include "app/page_command.h"
#include "app/page_snapshot.h"
#include "net/http_client.h"
#include "patch/patcher_service.h"
#include "text/localized_strings.h"
#include "text/ui_document.h"

// Where the controller works; the launcher passes DefaultAppSettings(),
// tests their own folders and clock.
struct SAppSettings {
  const LauncherConfig* config = nullptr;
  patch::SServiceFolders folders;
  std::wstring launcherFolder;  // holds "ui/locale/<code>.json"
  std::wstring uiCacheFolder;   // downloaded page resources (UiCacheDirectory)
  std::function<std::uint64_t()> tickCountMs;
};

SAppSettings DefaultAppSettings();

class CApp {
 public:
  // What runs, if anything; only a change from Idle admits new work.
  enum class EWork : std::uint32_t { Idle = 0, Syncing = 1, Patching = 2, Repairing = 3, RemovingOrphans = 4 };

  static constexpr std::uint32_t kTimerPeriodMs = 1000;
  static constexpr std::uint64_t kIdleResyncMs = 5000;

  explicit CApp(SAppSettings settings);
  ~CApp();

  CApp(const CApp&) = delete;
  CApp& operator=(const CApp&) = delete;

  // Creates the page, starts the engine, loads the strings, starts the timer
  // and the first synchronisation. False with a reason when a step fails.
  bool Initialize(CAppWindow& window, std::wstring& errorText);
  // Stops the timer and the page, then stops and joins both workers.
  void Shutdown();

  void StartSync();
  void StartPatchAsync(bool repair);
  void StartRemoveOrphans();

  void OnAppMessage(EAppMessage message);
  void OnTimer();
  // The window was shown, restored or resized (true) or hidden or minimised.
  void SetVisible(bool visible);
  void PushState();
  // Queues an error notice; a text beginning with "#" is a string key.
  void ShowNotice(std::wstring title, std::wstring message);
  // One message from the page, on the UI thread.
  void HandleWebMessage(std::string_view message);

  EWork Busy() const { return static_cast<EWork>(busy_.load()); }

 private:
  struct SNotice {
    ENoticeKind kind = ENoticeKind::Info;
    std::wstring title;
    std::wstring message;
  };

  // The view the workers fill, guarded by viewMutex_.
  struct SView {
    patch::SPatchView patch;
    bool installed = false;
    bool autoPatch = false;
    std::uint64_t bytesDone = 0;
    std::uint64_t bytesTotal = 0;
    std::uint64_t filesDone = 0;
    std::uint64_t filesTotal = 0;
    std::wstring currentFile;
    std::vector<std::wstring> orphans;
    std::uint64_t orphanBytes = 0;
  };

  bool CreateWebViewUi(std::wstring& errorText);
  void OnPageLoaded();
  void OnFatalPageError(const std::wstring& errorText);

  bool Admit(EWork work);
  void StartPatch(bool repair, patch::EPatchTrigger trigger);
  void FinishWork();
  void PostFromWorker(EAppMessage message);
  void CloseFromWorker();
  bool GameIsRunning(std::wstring& executableName);

  void RunSync(std::stop_token stop);
  void RefreshPageDocument();
  void RunPatch(std::stop_token stop, bool repair, patch::EPatchTrigger trigger);
  void RecordPatchFailure(const patch::SPatchOutcome& outcome, const std::wstring& error);
  void RecordPatchSuccess(const patch::SPatchOutcome& outcome, bool gameStartTried, bool gameStarted,
                          const std::wstring& startError);
  void RunRemoveOrphans(std::stop_token stop);
  void QueueNotice(ENoticeKind kind, std::wstring title, std::wstring message);

  SPageModel RebuildModel();
  std::wstring Localized(const std::wstring& text) const;

  bool IsEnabled(EBridgeCommand command, const SPageModel& model) const;
  void RunCommand(const SBridgeRequest& request);
  void Play(int processCount);
  void SwitchLanguage(text::EPatcherLanguage language);
  void OpenExternal(const std::wstring& url);
  void StartResize(const std::wstring& edge);
  void OpenLog();

  const SAppSettings settings_;
  const LauncherConfig& config_;
  text::EPatcherLanguage language_ = text::EPatcherLanguage::English;
  text::CLocalizedStrings strings_;
  patch::CPatcherService service_;
  net::CHttpClient http_;

  CAppWindow* window_ = nullptr;
  bool pageCreated_ = false;
  bool pageReady_ = false;
  std::string lastPushed_;
  SPageModel model_;  // the last rebuild, for the commands' enable flags
  std::optional<SPageNotice> shownNotice_;
  std::uint64_t noticeShownAt_ = 0;

  std::mutex viewMutex_;
  SView view_;
  std::vector<SNotice> notices_;
  text::SLauncherUiDocument document_;
  std::wstring coverUrl_;   // the document's cover address last downloaded
  std::wstring coverFile_;  // where it was saved; empty when there is none

  std::atomic<std::uint32_t> busy_{0};
  std::atomic<bool> shuttingDown_{false};
  bool firstSyncPending_ = false;
  std::atomic<std::uint64_t> lastSyncEnd_{0};

  std::jthread syncThread_;
  std::jthread workThread_;
};
