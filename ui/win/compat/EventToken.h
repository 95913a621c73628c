#pragma once
// WebView2.h includes "EventToken.h"; mingw-w64 ships it in lower case only,
// which a case-sensitive build host does not find.
#include <eventtoken.h>
