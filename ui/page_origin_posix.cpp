#include "ui/page_origin.h"

namespace webview {

// A scheme of our own: WebKitGTK hands custom schemes to the program, never https.
std::wstring_view PageOrigin() { return L"vardeni://launcher.vardeni.invalid/"; }

}  // namespace webview
