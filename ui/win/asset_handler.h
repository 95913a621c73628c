#pragma once
// The web view's side of the private host: every request to the page's
// origin is answered from the shared route resolver, never from the disk or
// the network.

#include "WebView2.h"

namespace webview {

// Adds the request filter for the page origin and installs the handler that
// answers it. Call once, before the first navigation.
HRESULT RegisterAssetHandler(ICoreWebView2* view, ICoreWebView2Environment* environment);

}  // namespace webview
