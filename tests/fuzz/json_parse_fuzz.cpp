// The JSON reader over UTF-8 text, as the page's commands and "ui.json" reach
// it: nothing may crash it, and whatever it accepts keeps the whole-document
// rules (blanks around it change nothing, a byte after it spoils it).
#include <cstddef>
#include <cstdint>
#include <string>

#include "text/json.h"
#include "text/utf.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::wstring document = text::Utf8ToWide({reinterpret_cast<const char*>(data), size});
  text::CJsonValue value;
  if (!text::ParseJson(document, value)) {
    if (!value.IsNull()) __builtin_trap();
    return 0;
  }
  text::CJsonValue again;
  if (!text::ParseJson(L"\r\n\t " + document + L" \n", again) || again.Kind() != value.Kind()) __builtin_trap();
  if (text::ParseJson(document + L"x", again)) __builtin_trap();
  return 0;
}
