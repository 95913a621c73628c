// What the controller asks of its window (CAppWindow), carried out with
// Win32 and the WebView2 host. Workers reach the window only through
// PostAppMessage and PostClose, which post to the UI thread.
#include "ui/win/main_window.h"

#include <shellapi.h>

#include "text/utf.h"
#include "ui/win/error_box.h"
#include "ui/win/webview_host.h"

namespace ui {
namespace {

// ShellExecuteW reports success as a value above 32.
constexpr INT_PTR kShellExecuteSucceeded = 32;

}  // namespace

void CMainWindow::PostAppMessage(EAppMessage message) {
  PostMessageW(window_, WM_APP + static_cast<UINT>(message), 0, 0);
}

void CMainWindow::PostClose() { PostMessageW(window_, WM_CLOSE, 0, 0); }

void CMainWindow::StartTimer(std::uint32_t periodMs) { SetTimer(window_, kTimerId, periodMs, nullptr); }

void CMainWindow::StopTimer() { KillTimer(window_, kTimerId); }

void CMainWindow::Minimize() { ShowWindow(window_, SW_MINIMIZE); }

void CMainWindow::BeginMoveOrResize(EWindowGrip grip) {
  // The page holds the mouse; the system's move or size loop takes it over.
  POINT cursor{};
  GetCursorPos(&cursor);
  ReleaseCapture();
  SendMessageW(window_, WM_NCLBUTTONDOWN, static_cast<WPARAM>(grip), MAKELPARAM(cursor.x, cursor.y));
}

void CMainWindow::ShowErrorBox(const std::wstring& text) { ui::ShowErrorBox(window_, config_.displayName, text); }

bool CMainWindow::OpenUrl(const std::wstring& url) {
  const auto result = reinterpret_cast<INT_PTR>(
      ShellExecuteW(nullptr, L"open", url.c_str(), nullptr, nullptr, SW_SHOWNORMAL));
  return result > kShellExecuteSucceeded;
}

void CMainWindow::OpenFolder(const std::wstring& folder) {
  ShellExecuteW(window_, L"open", folder.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}

void CMainWindow::RevealFile(const std::wstring& file) {
  const std::wstring parameters = L"/select,\"" + file + L"\"";
  ShellExecuteW(window_, nullptr, L"explorer.exe", parameters.c_str(), nullptr, SW_SHOWNORMAL);
}

bool CMainWindow::CreatePage(const std::wstring& userDataFolder, SPageCallbacks callbacks, std::wstring& errorText) {
  host_ = webview::CHost::Create(window_, userDataFolder, std::move(callbacks), errorText);
  return host_ != nullptr;
}

void CMainWindow::PostToPage(const std::string& utf8Text) {
  if (host_ != nullptr) host_->Post(text::Utf8ToWide(utf8Text));
}

void CMainWindow::ClosePage() {
  if (host_ == nullptr) return;
  host_->Close();
  host_.reset();
}

}  // namespace ui
