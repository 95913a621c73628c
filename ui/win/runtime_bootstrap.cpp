// The runtime bootstrap's question and failure boxes around the install
// steps of runtime_install.cpp; see runtime_bootstrap.h.
#include "ui/win/runtime_bootstrap.h"

#include <string>

#include "platform/locale_name.h"
#include "text/language.h"
#include "ui/win/runtime_install.h"
#include "ui/win/webview_host.h"

namespace webview {
namespace {

constexpr wchar_t kBoxTitle[] = L"Vardeni";

struct SBootstrapTexts {
  const wchar_t* question;
  const wchar_t* failureBeforeDetail;
  const wchar_t* failureBeforeLink;
};

constexpr SBootstrapTexts kEnglish{
    L"Vardeni needs a Microsoft component (Edge WebView2) that isn't installed on this PC.\n\nInstall it now?",
    L"The Microsoft Edge WebView2 component could not be installed.\n\nDetails: ",
    L"\n\nYou can install it manually from:\n",
};
constexpr SBootstrapTexts kArabic{
    L"يحتاج Vardeni إلى مكوّن من مايكروسوفت (Edge WebView2) غير مثبَّت على هذا الجهاز.\n\nهل تريد تثبيته الآن؟",
    L"تعذّر تثبيت مكوّن Microsoft Edge WebView2.\n\nالتفاصيل: ",
    L"\n\nيمكن تثبيته يدويًا من:\n",
};

}  // namespace

bool EnsureRuntime(HWND owner, const LauncherConfig& config) {
  if (IsRuntimePresent()) return true;
  // These boxes follow the user's locale alone (not the build's default
  // language): someone whose locale is not Arabic may not read it.
  const bool arabic = text::LanguageForLocaleName(platform::UserDefaultLocaleName(), false) ==
                      text::EPatcherLanguage::Arabic;
  const SBootstrapTexts& texts = arabic ? kArabic : kEnglish;
  const UINT reading = arabic ? MB_RIGHT | MB_RTLREADING : 0;

  if (MessageBoxW(owner, texts.question, kBoxTitle, MB_YESNO | MB_ICONQUESTION | MB_SETFOREGROUND | reading) !=
      IDYES) {
    return false;
  }
  std::wstring detail;
  if (InstallRuntime(SystemRuntimeInstaller(config, &IsRuntimePresent), InstallerFolder(), detail)) return true;
  // The detail stays English in both languages: it is what support reads.
  const std::wstring report =
      texts.failureBeforeDetail + detail + texts.failureBeforeLink + std::wstring(kBootstrapperUrl);
  MessageBoxW(owner, report.c_str(), kBoxTitle, MB_OK | MB_ICONERROR | MB_SETFOREGROUND | reading);
  return false;
}

}  // namespace webview
