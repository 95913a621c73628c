// "ui.json" from the patch host, read as the launcher reads it (UTF-8), with
// the notes an operator's check collects.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "text/ui_document.h"
#include "text/utf.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  text::SLauncherUiDocument document;
  std::wstring error;
  std::vector<text::SUiDocumentNote> notes;
  text::ReadLauncherUiDocument(text::Utf8ToWide({reinterpret_cast<const char*>(data), size}), document, error,
                               &notes);
  if (document.events.size() > text::kMaxUiEvents) __builtin_trap();
  return 0;
}
