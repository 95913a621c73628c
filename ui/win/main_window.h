#pragma once
// CMainWindow: the launcher's one top-level window. It has no frame of the
// system's own (the page draws its title bar and edges) but keeps the
// overlapped style so the system still offers snapping, the minimise
// animation and sizing loops. It routes window messages to the controller
// and implements the calls the controller makes on its window.

#include "ui/win/win32.h"

#include <memory>
#include <string>

#include "app/app_controller.h"
#include "app/app_window.h"
#include "app/launcher_config.h"

namespace webview {
class CHost;
}

namespace ui {

class CMainWindow final : public CAppWindow {
 public:
  // `config` (class name, title, sizes) must outlive the window.
  explicit CMainWindow(const LauncherConfig& config);
  ~CMainWindow();

  CMainWindow(const CMainWindow&) = delete;
  CMainWindow& operator=(const CMainWindow&) = delete;

  // Registers the class, creates the window centred on the cursor's monitor,
  // initialises `app` in it and shows it. False with a reason otherwise.
  bool Create(HINSTANCE instance, CApp& app, std::wstring& errorText);
  HWND Handle() const { return window_; }

  void PostAppMessage(EAppMessage message) override;
  void PostClose() override;
  void StartTimer(std::uint32_t periodMs) override;
  void StopTimer() override;
  void Minimize() override;
  void BeginMoveOrResize(EWindowGrip grip) override;
  void ShowErrorBox(const std::wstring& text) override;
  bool OpenUrl(const std::wstring& url) override;
  void OpenFolder(const std::wstring& folder) override;
  void RevealFile(const std::wstring& file) override;
  bool CreatePage(const std::wstring& userDataFolder, SPageCallbacks callbacks, std::wstring& errorText) override;
  void PostToPage(const std::string& utf8Text) override;
  void ClosePage() override;

 private:
  // The controller's one timer.
  static constexpr UINT_PTR kTimerId = 1;

  static LRESULT CALLBACK AttachProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  static LRESULT CALLBACK InstanceProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam);

  bool RegisterWindowClass(std::wstring& errorText);
  void ApplyCompositorLook();
  void SetIcons();
  void UpdateRegion();
  LRESULT HitTest(LPARAM lParam) const;
  void FillMinMaxInfo(MINMAXINFO& info) const;
  void OnSize(WPARAM kind);

  const LauncherConfig& config_;
  HINSTANCE instance_ = nullptr;
  HWND window_ = nullptr;
  CApp* app_ = nullptr;  // attached once the window exists
  std::shared_ptr<webview::CHost> host_;
};

}  // namespace ui
