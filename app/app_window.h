#pragma once
// What the controller needs from the window it lives in. Each window system
// implements this once (a Win32 window with WebView2, a GTK window with
// WebKitGTK); the controller itself knows neither. Apart from PostAppMessage
// and PostClose, which workers use, every call comes from the UI thread.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

// Worker messages, numbered as offsets from WM_APP on Windows. They carry no
// data: what changed is in the controller's view.
enum class EAppMessage : std::uint32_t {
  Refresh = 0,         // rebuild and push
  Progress = 1,        // patch progress
  WorkFinished = 2,    // end of a patch, repair or orphan removal
  SyncFinished = 3,    // end of a successful synchronisation
};

// What the system's move and size loops start from, as Windows hit-test codes.
enum class EWindowGrip : int {
  Caption = 2,
  Left = 10,
  Right = 11,
  Top = 12,
  TopLeft = 13,
  TopRight = 14,
  Bottom = 15,
  BottomLeft = 16,
  BottomRight = 17,
};

// The page host's three callbacks, all on the UI thread.
struct SPageCallbacks {
  std::function<void(std::string_view utf8Message)> messageReceived;
  // The page finished loading (again): it holds no state yet.
  std::function<void()> pageLoaded;
  // The page cannot be shown at all; the text says why.
  std::function<void(const std::wstring& errorText)> fatalError;
};

class CAppWindow {
 public:
  // Any thread: queue the message for CApp::OnAppMessage on the UI thread.
  virtual void PostAppMessage(EAppMessage message) = 0;
  // Any thread: ask the window to close, as the system's close would.
  virtual void PostClose() = 0;

  // Calls CApp::OnTimer every `periodMs` until StopTimer.
  virtual void StartTimer(std::uint32_t periodMs) = 0;
  virtual void StopTimer() = 0;

  virtual void Minimize() = 0;
  // Hands the pointer to the system's move (Caption) or size loop.
  virtual void BeginMoveOrResize(EWindowGrip grip) = 0;
  // A modal error box owned by the window, titled with the display name.
  virtual void ShowErrorBox(const std::wstring& text) = 0;

  // Opens an https address in the user's browser; false when the system could not.
  virtual bool OpenUrl(const std::wstring& url) = 0;
  virtual void OpenFolder(const std::wstring& folder) = 0;
  // Opens the file manager with this file selected.
  virtual void RevealFile(const std::wstring& file) = 0;

  // Starts creating the page in the window with its browser profile in
  // `userDataFolder`. False (with a reason) when it cannot even start; later
  // failures arrive through fatalError.
  virtual bool CreatePage(const std::wstring& userDataFolder, SPageCallbacks callbacks, std::wstring& errorText) = 0;
  // Sends one snapshot (UTF-8 JSON) to the loaded page.
  virtual void PostToPage(const std::string& utf8Text) = 0;
  // Tears the page down; no callback arrives after it.
  virtual void ClosePage() = 0;

 protected:
  ~CAppWindow() = default;
};
