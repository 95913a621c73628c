// A request of the page to its private host, a URI in UTF-8, answered from
// the embedded resources this target links.
#include <cstddef>
#include <cstdint>

#include "text/utf.h"
#include "ui/asset_routes.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const webview::SAssetResponse answer =
      webview::ResolveAssetRequest(text::Utf8ToWide({reinterpret_cast<const char*>(data), size}));
  if (answer.statusCode == 200 && answer.body.empty()) __builtin_trap();
  return 0;
}
