// A locale file of the page: one flat object of strings.
#include <cstddef>
#include <cstdint>

#include "text/locale_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  text::StringTable table;
  text::ParseLocaleObject({reinterpret_cast<const char*>(data), size}, table);
  return 0;
}
