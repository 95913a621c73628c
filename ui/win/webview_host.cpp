// webview::CHost: the WebView2 creation chain, the lock-down settings, the
// navigation filter and the message channel; see webview_host.h.
#include "ui/win/webview_host.h"

#include <cwchar>
#include <utility>

#include "log/log.h"
#include "text/utf.h"
#include "ui/page_origin.h"
#include "ui/win/asset_handler.h"
#include "ui/win/com_handler.h"
#include "ui/win/webview_iids.h"

namespace webview {
namespace {

constexpr wchar_t kNoWindowError[] = L"Cannot host the interface without a window.";
constexpr wchar_t kRuntimeNotFoundError[] = L"WebView2 runtime not found";
constexpr wchar_t kStartError[] = L"The interface host could not be started.";
constexpr wchar_t kAttachError[] = L"The interface could not be attached to the window.";
constexpr wchar_t kLoadError[] = L"The interface could not be loaded.";
constexpr wchar_t kLogCategory[] = L"webview";
constexpr wchar_t kRuntimeLogPrefix[] = L"WebView2 runtime ";

// What the loader answers when no runtime is installed.
constexpr HRESULT kRuntimeMissing = HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);

using BoolSetting = HRESULT (STDMETHODCALLTYPE ICoreWebView2Settings::*)(BOOL);

// Everything not listed keeps the runtime's default.
constexpr std::pair<BoolSetting, BOOL> kSettings[] = {
    {&ICoreWebView2Settings::put_IsWebMessageEnabled, TRUE},
    {&ICoreWebView2Settings::put_AreHostObjectsAllowed, FALSE},
    {&ICoreWebView2Settings::put_AreDefaultContextMenusEnabled, FALSE},
    {&ICoreWebView2Settings::put_IsStatusBarEnabled, FALSE},
    {&ICoreWebView2Settings::put_IsBuiltInErrorPageEnabled, FALSE},
    {&ICoreWebView2Settings::put_AreDevToolsEnabled, FALSE},
    {&ICoreWebView2Settings::put_IsZoomControlEnabled, FALSE},
};

// The environment could not be made: a missing runtime has its own sentence.
std::wstring_view EnvironmentError(HRESULT code) {
  return code == kRuntimeMissing ? std::wstring_view(kRuntimeNotFoundError) : std::wstring_view(kStartError);
}

std::wstring WithCode(std::wstring_view message, HRESULT code) {
  wchar_t number[16];
  std::swprintf(number, std::size(number), L"0x%08lX", static_cast<unsigned long>(code));
  return std::wstring(message) + L" (" + number + L")";
}

}  // namespace

template <typename... TArgs>
std::function<HRESULT(TArgs...)> CHost::WhileOpen(std::weak_ptr<CHost> host, HRESULT (CHost::*method)(TArgs...)) {
  return [host = std::move(host), method](TArgs... args) -> HRESULT {
    const std::shared_ptr<CHost> alive = host.lock();
    if (alive == nullptr || alive->closing_) return S_OK;
    return (alive.get()->*method)(args...);
  };
}

std::shared_ptr<CHost> CHost::Create(HWND window, const std::wstring& userDataFolder, SPageCallbacks callbacks,
                                     std::wstring& errorText) {
  if (window == nullptr) {
    errorText = kNoWindowError;
    return nullptr;
  }
  std::shared_ptr<CHost> host(new CHost(window, std::move(callbacks)));
  host->Start(userDataFolder);
  return host;
}

CHost::CHost(HWND window, SPageCallbacks callbacks) : window_(window), callbacks_(std::move(callbacks)) {}

CHost::~CHost() { Close(); }

void CHost::Start(const std::wstring& userDataFolder) {
  const auto handler = CComHandler<ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler, HRESULT,
                                   ICoreWebView2Environment*>::Make(kIidEnvironmentCompleted,
                                                                    WhileOpen(weak_from_this(),
                                                                              &CHost::OnEnvironmentCreated));
  // No browser folder and no options: the installed evergreen runtime as it is.
  const HRESULT result =
      CreateCoreWebView2EnvironmentWithOptions(nullptr, userDataFolder.c_str(), nullptr, handler.get());
  if (FAILED(result)) Fail(EnvironmentError(result), result);
}

HRESULT CHost::OnEnvironmentCreated(HRESULT result, ICoreWebView2Environment* environment) {
  if (FAILED(result) || environment == nullptr) {
    const HRESULT code = FAILED(result) ? result : E_POINTER;
    Fail(EnvironmentError(code), code);
    return S_OK;
  }
  environment_ = KeepReference(environment);
  const auto handler = CComHandler<ICoreWebView2CreateCoreWebView2ControllerCompletedHandler, HRESULT,
                                   ICoreWebView2Controller*>::Make(kIidControllerCompleted,
                                                                   WhileOpen(weak_from_this(),
                                                                             &CHost::OnControllerCreated));
  const HRESULT created = environment_->CreateCoreWebView2Controller(window_, handler.get());
  if (FAILED(created)) Fail(kAttachError, created);
  return S_OK;
}

HRESULT CHost::OnControllerCreated(HRESULT result, ICoreWebView2Controller* controller) {
  if (FAILED(result) || controller == nullptr) {
    Fail(kAttachError, FAILED(result) ? result : E_POINTER);
    return S_OK;
  }
  controller_ = KeepReference(controller);
  // Hidden until the page has loaded: never a half-drawn page or the runtime's error page.
  controller_->put_IsVisible(FALSE);
  ICoreWebView2* view = nullptr;
  const HRESULT got = controller_->get_CoreWebView2(&view);
  if (FAILED(got) || view == nullptr) {
    Fail(kAttachError, FAILED(got) ? got : E_POINTER);
    return S_OK;
  }
  view_.reset(view);
  ApplySettings();
  InstallEventHandlers();
  Resize();
  const HRESULT registered = RegisterAssetHandler(view_.get(), environment_.get());
  if (FAILED(registered)) {
    Fail(kLoadError, registered);
    return S_OK;
  }
  const HRESULT navigated = view_->Navigate(std::wstring(PageOrigin()).c_str());
  if (FAILED(navigated)) Fail(kLoadError, navigated);
  return S_OK;
}

void CHost::ApplySettings() {
  ICoreWebView2Settings* settings = nullptr;
  if (FAILED(view_->get_Settings(&settings)) || settings == nullptr) return;
  const ComRef<ICoreWebView2Settings> owned(settings);
  for (const auto& [setter, value] : kSettings) (settings->*setter)(value);
  // Older runtimes lack the third settings interface and its browser keys switch.
  if (const auto settings3 = QueryReference<ICoreWebView2Settings3>(settings, kIidSettings3)) {
    settings3->put_AreBrowserAcceleratorKeysEnabled(FALSE);
  }
}

void CHost::InstallEventHandlers() {
  // The runtime keeps the handlers until the controller closes; the tokens are not needed.
  EventRegistrationToken token{};
  const std::weak_ptr<CHost> self = weak_from_this();
  view_->add_NavigationStarting(
      CComHandler<ICoreWebView2NavigationStartingEventHandler, ICoreWebView2*,
                  ICoreWebView2NavigationStartingEventArgs*>::Make(kIidNavigationStarting,
                                                                   WhileOpen(self, &CHost::OnNavigationStarting))
          .get(),
      &token);
  view_->add_NewWindowRequested(
      CComHandler<ICoreWebView2NewWindowRequestedEventHandler, ICoreWebView2*,
                  ICoreWebView2NewWindowRequestedEventArgs*>::Make(kIidNewWindowRequested,
                                                                   WhileOpen(self, &CHost::OnNewWindowRequested))
          .get(),
      &token);
  view_->add_NavigationCompleted(
      CComHandler<ICoreWebView2NavigationCompletedEventHandler, ICoreWebView2*,
                  ICoreWebView2NavigationCompletedEventArgs*>::Make(kIidNavigationCompleted,
                                                                    WhileOpen(self, &CHost::OnNavigationCompleted))
          .get(),
      &token);
  view_->add_WebMessageReceived(
      CComHandler<ICoreWebView2WebMessageReceivedEventHandler, ICoreWebView2*,
                  ICoreWebView2WebMessageReceivedEventArgs*>::Make(kIidWebMessageReceived,
                                                                   WhileOpen(self, &CHost::OnWebMessageReceived))
          .get(),
      &token);
}

HRESULT CHost::OnNavigationStarting(ICoreWebView2*, ICoreWebView2NavigationStartingEventArgs* args) {
  // Only the private origin may load; links leave through the page's openExternal command.
  LPWSTR uri = nullptr;
  const bool readable = SUCCEEDED(args->get_Uri(&uri)) && uri != nullptr;
  const bool allowed = readable && TakeComString(uri).starts_with(PageOrigin());
  if (!allowed) args->put_Cancel(TRUE);
  return S_OK;
}

HRESULT CHost::OnNewWindowRequested(ICoreWebView2*, ICoreWebView2NewWindowRequestedEventArgs* args) {
  args->put_Handled(TRUE);
  return S_OK;
}

HRESULT CHost::OnNavigationCompleted(ICoreWebView2*, ICoreWebView2NavigationCompletedEventArgs* args) {
  BOOL succeeded = FALSE;
  args->get_IsSuccess(&succeeded);
  if (!succeeded) {
    COREWEBVIEW2_WEB_ERROR_STATUS status = COREWEBVIEW2_WEB_ERROR_STATUS_UNKNOWN;
    args->get_WebErrorStatus(&status);
    Fail(kLoadError, static_cast<HRESULT>(status));
    return S_OK;
  }
  controller_->put_IsVisible(TRUE);
  if (callbacks_.pageLoaded) callbacks_.pageLoaded();
  return S_OK;
}

HRESULT CHost::OnWebMessageReceived(ICoreWebView2*, ICoreWebView2WebMessageReceivedEventArgs* args) {
  // The page sends strings only; anything else is not ours to read.
  LPWSTR message = nullptr;
  if (FAILED(args->TryGetWebMessageAsString(&message)) || message == nullptr) return S_OK;
  const std::string utf8 = text::WideToUtf8(TakeComString(message));
  if (callbacks_.messageReceived) callbacks_.messageReceived(utf8);
  return S_OK;
}

void CHost::Post(const std::wstring& text) {
  if (view_ != nullptr && !closing_) view_->PostWebMessageAsString(text.c_str());
}

void CHost::Resize() {
  if (controller_ == nullptr) return;
  RECT bounds{};
  GetClientRect(window_, &bounds);
  controller_->put_Bounds(bounds);
}

void CHost::Focus() {
  if (controller_ != nullptr && !closing_) controller_->MoveFocus(COREWEBVIEW2_MOVE_FOCUS_REASON_PROGRAMMATIC);
}

void CHost::Close() {
  if (closing_) return;
  closing_ = true;
  if (controller_ != nullptr) controller_->Close();
  view_.reset();
  controller_.reset();
  environment_.reset();
}

void CHost::Fail(std::wstring_view message, HRESULT code) {
  if (failed_ || closing_) return;
  failed_ = true;
  if (callbacks_.fatalError) callbacks_.fatalError(WithCode(message, code));
}

bool IsRuntimePresent() {
  LPWSTR version = nullptr;
  if (FAILED(GetAvailableCoreWebView2BrowserVersionString(nullptr, &version))) {
    CoTaskMemFree(version);
    return false;
  }
  const std::wstring text = TakeComString(version);
  if (text.empty()) return false;
  logging::LogInfo(kLogCategory, kRuntimeLogPrefix + text);
  return true;
}

}  // namespace webview
