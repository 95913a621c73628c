#include "ui/page_origin.h"

namespace webview {

std::wstring_view PageOrigin() { return L"https://launcher.vardeni.invalid/"; }

}  // namespace webview
