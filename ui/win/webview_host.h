#pragma once
// webview::CHost puts the launcher's page into the main window with the
// Edge WebView2 runtime, locked down so it behaves like part of the program
// and not like a browser: only the private origin loads, no new windows, no
// menus, developer tools, zoom or browser keys. Creation runs through the
// runtime's asynchronous chain; every outcome arrives on the UI thread.

#include "ui/win/win32.h"

#include <memory>
#include <string>
#include <string_view>

#include "WebView2.h"
#include "app/app_window.h"
#include "ui/win/com_ref.h"

namespace webview {

class CHost : public std::enable_shared_from_this<CHost> {
 public:
  // Starts putting the page into `window` with its browser profile in
  // `userDataFolder` and returns at once; success or failure arrive through
  // `callbacks`. Null with `errorText` only when there is no window.
  static std::shared_ptr<CHost> Create(HWND window, const std::wstring& userDataFolder, SPageCallbacks callbacks,
                                       std::wstring& errorText);
  ~CHost();

  CHost(const CHost&) = delete;
  CHost& operator=(const CHost&) = delete;

  // Sends one string message to the page.
  void Post(const std::wstring& text);
  // Fits the view to the window's client area.
  void Resize();
  // Gives the keyboard focus to the page (after the window was activated).
  void Focus();
  // Releases the runtime's objects; no callback arrives after it.
  void Close();

 private:
  CHost(HWND window, SPageCallbacks callbacks);

  // Runs `method` on the host only while it exists and is not closing.
  template <typename... TArgs>
  static std::function<HRESULT(TArgs...)> WhileOpen(std::weak_ptr<CHost> host, HRESULT (CHost::*method)(TArgs...));

  void Start(const std::wstring& userDataFolder);
  HRESULT OnEnvironmentCreated(HRESULT result, ICoreWebView2Environment* environment);
  HRESULT OnControllerCreated(HRESULT result, ICoreWebView2Controller* controller);
  void ApplySettings();
  void InstallEventHandlers();
  HRESULT OnNavigationStarting(ICoreWebView2* sender, ICoreWebView2NavigationStartingEventArgs* args);
  HRESULT OnNewWindowRequested(ICoreWebView2* sender, ICoreWebView2NewWindowRequestedEventArgs* args);
  HRESULT OnNavigationCompleted(ICoreWebView2* sender, ICoreWebView2NavigationCompletedEventArgs* args);
  HRESULT OnWebMessageReceived(ICoreWebView2* sender, ICoreWebView2WebMessageReceivedEventArgs* args);
  // Reports the first failure only; the host is of no use after it.
  void Fail(std::wstring_view message, HRESULT code);

  const HWND window_;
  const SPageCallbacks callbacks_;
  ComRef<ICoreWebView2Environment> environment_;
  ComRef<ICoreWebView2Controller> controller_;
  ComRef<ICoreWebView2> view_;
  bool closing_ = false;
  bool failed_ = false;
};

// Asks the runtime loader for the installed runtime's version (logged);
// true when one is installed.
bool IsRuntimePresent();

}  // namespace webview
