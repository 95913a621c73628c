// CMainWindow: class registration, creation and placement, the frameless
// shape and hit-testing, and the routing of window messages to the
// controller; see main_window.h. The calls the controller makes on its
// window are in main_window_calls.cpp.
#include "ui/win/main_window.h"

#include <dwmapi.h>
#include <windowsx.h>

#include "ui/win/dpi.h"
#include "ui/win/webview_host.h"
#include "ui/window_geometry.h"

namespace ui {
namespace {

constexpr wchar_t kRegisterError[] = L"Could not register window class.";
constexpr wchar_t kCreateError[] = L"Could not create main window.";

constexpr DWORD kStyle = WS_OVERLAPPEDWINDOW;
constexpr DWORD kExStyle = WS_EX_APPWINDOW;
constexpr int kIconResource = 102;

// Desktop compositor attributes of Windows 10 20H1 and Windows 11; older
// systems refuse them, which leaves the default look.
constexpr DWORD kDwmUseImmersiveDarkMode = 20;
constexpr DWORD kDwmWindowCornerPreference = 33;
constexpr DWORD kDwmCornerRound = 2;

constexpr UINT kDpiChanged = 0x02E0;

SRect FromRect(const RECT& rect) { return {rect.left, rect.top, rect.right, rect.bottom}; }

HICON LoadProgramIcon(HINSTANCE instance, int sizeMetricX, int sizeMetricY) {
  const HANDLE icon = LoadImageW(instance, MAKEINTRESOURCEW(kIconResource), IMAGE_ICON, GetSystemMetrics(sizeMetricX),
                                 GetSystemMetrics(sizeMetricY), LR_DEFAULTCOLOR);
  return icon != nullptr ? static_cast<HICON>(icon) : LoadIconW(nullptr, IDI_APPLICATION);
}

// The work area of the monitor nearest to `monitor`'s point or window.
bool WorkArea(HMONITOR monitor, RECT& area) {
  MONITORINFO info{};
  info.cbSize = sizeof(info);
  if (!GetMonitorInfoW(monitor, &info)) return false;
  area = info.rcWork;
  return true;
}

}  // namespace

CMainWindow::CMainWindow(const LauncherConfig& config) : config_(config) {}

CMainWindow::~CMainWindow() {
  if (window_ != nullptr) DestroyWindow(window_);
}

bool CMainWindow::Create(HINSTANCE instance, CApp& app, std::wstring& errorText) {
  instance_ = instance;
  if (!RegisterWindowClass(errorText)) return false;

  const int dpi = SystemDpi();
  const SSize outer = WindowSizeForClient(InitialClientSize(config_, dpi), kStyle, kExStyle, dpi);
  POINT cursor{};
  GetCursorPos(&cursor);
  RECT workArea{};
  WorkArea(MonitorFromPoint(cursor, MONITOR_DEFAULTTONEAREST), workArea);
  const SRect placed = CentreInWorkArea(FromRect(workArea), outer);

  if (CreateWindowExW(kExStyle, config_.windowClass.c_str(), config_.displayName.c_str(), kStyle, placed.left,
                      placed.top, outer.width, outer.height, nullptr, nullptr, instance, this) == nullptr) {
    errorText = kCreateError;
    return false;
  }
  ApplyCompositorLook();
  UpdateRegion();
  SetIcons();

  if (!app.Initialize(*this, errorText)) {
    app.Shutdown();
    DestroyWindow(window_);
    return false;
  }
  // Attached only now: a window that failed to initialise never runs a message loop.
  app_ = &app;
  ShowWindow(window_, SW_SHOWDEFAULT);
  UpdateWindow(window_);
  return true;
}

bool CMainWindow::RegisterWindowClass(std::wstring& errorText) {
  WNDCLASSEXW windowClass{};
  windowClass.cbSize = sizeof(windowClass);
  windowClass.style = CS_HREDRAW | CS_VREDRAW;
  windowClass.lpfnWndProc = &CMainWindow::AttachProc;
  windowClass.hInstance = instance_;
  windowClass.hIcon = LoadProgramIcon(instance_, SM_CXICON, SM_CYICON);
  windowClass.hIconSm = LoadProgramIcon(instance_, SM_CXSMICON, SM_CYSMICON);
  windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  windowClass.lpszClassName = config_.windowClass.c_str();
  if (RegisterClassExW(&windowClass) == 0 && GetLastError() != ERROR_CLASS_ALREADY_EXISTS) {
    errorText = kRegisterError;
    return false;
  }
  return true;
}

void CMainWindow::ApplyCompositorLook() {
  const BOOL dark = TRUE;
  DwmSetWindowAttribute(window_, kDwmUseImmersiveDarkMode, &dark, sizeof(dark));
  const DWORD corners = kDwmCornerRound;
  DwmSetWindowAttribute(window_, kDwmWindowCornerPreference, &corners, sizeof(corners));
}

void CMainWindow::SetIcons() {
  const HICON bigIcon = LoadProgramIcon(instance_, SM_CXICON, SM_CYICON);
  const HICON smallIcon = LoadProgramIcon(instance_, SM_CXSMICON, SM_CYSMICON);
  SendMessageW(window_, WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(bigIcon));
  SendMessageW(window_, WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(smallIcon));
}

void CMainWindow::UpdateRegion() {
  RECT client{};
  GetClientRect(window_, &client);
  const bool plain = !IsZoomed(window_) && !IsIconic(window_) && client.right >= 1 && client.bottom >= 1;
  if (!plain) {
    SetWindowRgn(window_, nullptr, TRUE);
    return;
  }
  const int corner = CornerDiameter(WindowDpi(window_));
  // The system owns the region once it is set.
  SetWindowRgn(window_, CreateRoundRectRgn(0, 0, client.right + 1, client.bottom + 1, corner, corner), TRUE);
}

LRESULT CALLBACK CMainWindow::AttachProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message != WM_NCCREATE) return DefWindowProcW(window, message, wParam, lParam);
  auto* self = static_cast<CMainWindow*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
  self->window_ = window;
  SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
  SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&CMainWindow::InstanceProc));
  return self->HandleMessage(message, wParam, lParam);
}

LRESULT CALLBACK CMainWindow::InstanceProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  auto* self = reinterpret_cast<CMainWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (self == nullptr) return DefWindowProcW(window, message, wParam, lParam);
  return self->HandleMessage(message, wParam, lParam);
}

LRESULT CMainWindow::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message >= WM_APP && message <= WM_APP + static_cast<UINT>(EAppMessage::SyncFinished)) {
    if (app_ != nullptr) app_->OnAppMessage(static_cast<EAppMessage>(message - WM_APP));
    return 0;
  }
  switch (message) {
    case WM_NCCALCSIZE:
      // The whole window is client area; maximised, it must stop at the work
      // area instead of spilling over the screen edges and the taskbar.
      if (wParam == TRUE && IsZoomed(window_)) {
        RECT area{};
        if (WorkArea(MonitorFromWindow(window_, MONITOR_DEFAULTTONEAREST), area)) {
          reinterpret_cast<NCCALCSIZE_PARAMS*>(lParam)->rgrc[0] = area;
        }
      }
      return 0;
    case WM_NCHITTEST:
      return HitTest(lParam);
    case WM_GETMINMAXINFO:
      FillMinMaxInfo(*reinterpret_cast<MINMAXINFO*>(lParam));
      return 0;
    case kDpiChanged: {
      const RECT& suggested = *reinterpret_cast<const RECT*>(lParam);
      SetWindowPos(window_, nullptr, suggested.left, suggested.top, suggested.right - suggested.left,
                   suggested.bottom - suggested.top, SWP_NOZORDER | SWP_NOACTIVATE);
      UpdateRegion();
      return 0;
    }
    case WM_SIZE:
      OnSize(wParam);
      return 0;
    case WM_SHOWWINDOW:
      if (app_ != nullptr) app_->SetVisible(wParam != FALSE);
      return 0;
    case WM_ACTIVATE: {
      const LRESULT result = DefWindowProcW(window_, message, wParam, lParam);
      // Without this the page keeps no keyboard focus after Alt+Tab.
      if (LOWORD(wParam) != WA_INACTIVE && host_ != nullptr) host_->Focus();
      return result;
    }
    case WM_TIMER:
      if (app_ != nullptr && wParam == kTimerId) app_->OnTimer();
      return 0;
    case WM_PAINT: {
      PAINTSTRUCT paint;
      BeginPaint(window_, &paint);
      EndPaint(window_, &paint);
      return 0;
    }
    case WM_ERASEBKGND:
      return 1;  // the page paints everything; erasing would only flicker
    case WM_CLOSE:
      DestroyWindow(window_);
      return 0;
    case WM_DESTROY:
      if (app_ != nullptr) {
        app_->Shutdown();
        PostQuitMessage(0);
      }
      return 0;
    case WM_NCDESTROY:
      SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
      window_ = nullptr;
      app_ = nullptr;
      return 0;
    default:
      return DefWindowProcW(window_, message, wParam, lParam);
  }
}

LRESULT CMainWindow::HitTest(LPARAM lParam) const {
  if (IsZoomed(window_)) return HTCLIENT;
  RECT bounds{};
  GetWindowRect(window_, &bounds);
  const int border = GetSystemMetrics(SM_CXPADDEDBORDER) + GetSystemMetrics(SM_CXSIZEFRAME);
  const auto grip = GripAt(FromRect(bounds), GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam), border);
  return grip ? static_cast<LRESULT>(*grip) : HTCLIENT;
}

void CMainWindow::FillMinMaxInfo(MINMAXINFO& info) const {
  const int dpi = WindowDpi(window_);
  const auto style = static_cast<DWORD>(GetWindowLongPtrW(window_, GWL_STYLE));
  const auto exStyle = static_cast<DWORD>(GetWindowLongPtrW(window_, GWL_EXSTYLE));
  const SSize minimum = WindowSizeForClient(MinimumClientSize(config_, dpi), style, exStyle, dpi);
  info.ptMinTrackSize = {minimum.width, minimum.height};
}

void CMainWindow::OnSize(WPARAM kind) {
  UpdateRegion();
  if (kind == SIZE_MINIMIZED) {
    if (app_ != nullptr) app_->SetVisible(false);
    return;
  }
  if (host_ != nullptr) host_->Resize();
  if (app_ != nullptr && IsWindowVisible(window_)) app_->SetVisible(true);
}

}  // namespace ui
