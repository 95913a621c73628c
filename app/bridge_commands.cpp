// CApp::HandleWebMessage: what each command from the page does. Everything
// runs on the UI thread; long work is only started here.
#include <array>
#include <filesystem>
#include <system_error>
#include <utility>

#include "app/app_controller.h"
#include "app/game_launch.h"
#include "app/game_launch_os.h"
#include "app/link_policy.h"
#include "log/log.h"
#include "platform/path_text.h"

namespace {

constexpr wchar_t kRefusedDebugLine[] = L"launcher: refused a webview command\n";
constexpr wchar_t kRefusedLogLine[] = L"refused a webview command";

// Edge names compare exactly; physical edges keep their names in right-to-left pages.
constexpr std::array<std::pair<std::wstring_view, EWindowGrip>, 8> kResizeEdges{{
    {L"left", EWindowGrip::Left},
    {L"right", EWindowGrip::Right},
    {L"top", EWindowGrip::Top},
    {L"topLeft", EWindowGrip::TopLeft},
    {L"topRight", EWindowGrip::TopRight},
    {L"bottom", EWindowGrip::Bottom},
    {L"bottomLeft", EWindowGrip::BottomLeft},
    {L"bottomRight", EWindowGrip::BottomRight},
}};

// The path without its last component and any separators that end it.
std::wstring FolderOf(std::wstring path) {
  while (!path.empty() && (path.back() == L'/' || path.back() == L'\\')) path.pop_back();
  const std::size_t cut = path.find_last_of(L"/\\");
  path.resize(cut == std::wstring::npos ? 0 : cut);
  while (!path.empty() && (path.back() == L'/' || path.back() == L'\\')) path.pop_back();
  return path;
}

}  // namespace

void CApp::HandleWebMessage(std::string_view message) {
  SBridgeRequest request;
  if (!ParseBridgeCommand(message, request)) {
    WriteDebuggerOutput(kRefusedDebugLine);
    logging::LogWarning(L"bridge", kRefusedLogLine);
    return;
  }
  // The page greys these buttons with the same flags; this only stops stale clicks.
  if (!IsEnabled(request.command, model_)) return;
  RunCommand(request);
}

bool CApp::IsEnabled(EBridgeCommand command, const SPageModel& model) const {
  switch (command) {
    case EBridgeCommand::Patch:
      return model.canPatch;
    case EBridgeCommand::Play:
    case EBridgeCommand::PlayMulti:
      return model.canPlay;
    case EBridgeCommand::Repair:
      return model.canRepair;
    case EBridgeCommand::RemoveOrphans:
      return model.canRepair && model.orphanFiles > 0;
    default:
      return true;
  }
}

void CApp::RunCommand(const SBridgeRequest& request) {
  if (window_ == nullptr) return;
  switch (request.command) {
    case EBridgeCommand::Minimize:
      return window_->Minimize();
    case EBridgeCommand::Close:
      return window_->PostClose();
    case EBridgeCommand::Patch:
      return StartPatchAsync(false);
    case EBridgeCommand::Repair:
      return StartPatchAsync(true);
    case EBridgeCommand::RemoveOrphans:
      return StartRemoveOrphans();
    case EBridgeCommand::Refresh:
      return StartSync();
    case EBridgeCommand::Play:
      return Play(1);
    case EBridgeCommand::PlayMulti:
      return Play(2);
    case EBridgeCommand::LanguageEN:
      return SwitchLanguage(text::EPatcherLanguage::English);
    case EBridgeCommand::LanguageAR:
      return SwitchLanguage(text::EPatcherLanguage::Arabic);
    case EBridgeCommand::OpenExternal:
      return OpenExternal(request.argument);
    case EBridgeCommand::StartDrag:
      return window_->BeginMoveOrResize(EWindowGrip::Caption);
    case EBridgeCommand::StartResize:
      return StartResize(request.argument);
    case EBridgeCommand::OpenLog:
      return OpenLog();
    default:
      return;  // toggleSettings is accepted and has no native action
  }
}

void CApp::Play(int processCount) {
  bool anyStarted = false;
  std::wstring firstError;
  for (int i = 0; i < processCount; ++i) {
    std::wstring error;
    if (PrepareGameLaunch(error, config_)) {
      anyStarted = true;
    } else if (firstError.empty()) {
      firstError = std::move(error);
    }
  }
  if (anyStarted) {
    if (!shuttingDown_) window_->PostClose();
    return;
  }
  ShowNotice(strings_.Text(L"start_game"), firstError);
  PushState();
}

void CApp::SwitchLanguage(text::EPatcherLanguage language) {
  strings_.Load(language, platform::ToPath(settings_.launcherFolder));
  language_ = language;
  service_.SetLanguage(language);
  std::wstring ignoredError;  // a state that could not be saved is saved with the next change
  service_.SaveState(ignoredError);
  PushState();
  StartSync();
}

void CApp::OpenExternal(const std::wstring& url) {
  if (url.empty()) return;
  const std::wstring link = NormalizeExternalLink(url);
  std::wstring_view problem;
  if (!IsAllowedExternalLink(link)) {
    problem = kLinkRefused;
  } else if (!window_->OpenUrl(link)) {
    problem = kLinkNotOpened;
  } else {
    return;
  }
  ShowNotice(strings_.Text(L"open_link", L"Link"), std::wstring(problem));
  PushState();
}

void CApp::StartResize(const std::wstring& edge) {
  for (const auto& [name, grip] : kResizeEdges) {
    if (name == edge) return window_->BeginMoveOrResize(grip);
  }
}

void CApp::OpenLog() {
  const std::wstring path = logging::CurrentLogFilePath();
  if (path.empty()) return;
  std::error_code error;
  if (std::filesystem::exists(platform::ToPath(path), error)) {
    window_->RevealFile(path);
  } else {
    window_->OpenFolder(FolderOf(path));
  }
}
