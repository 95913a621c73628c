// "integrity.cache" as it is loaded; every record the launcher writes back
// from it must load again unchanged.
#include <cstddef>
#include <cstdint>
#include <string>

#include "patch/integrity_cache.h"
#include "patch/line_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  patch::IntegrityRecords loaded = patch::ParseIntegrityCache(
      patch::SplitUtf8Lines({reinterpret_cast<const char*>(data), size}));
  const patch::IntegrityRecords reloaded =
      patch::ParseIntegrityCache(patch::SplitUtf8Lines(patch::FormatIntegrityCache(loaded)));
  // Records whose key holds a line break are left out of the file on purpose.
  std::erase_if(loaded, [](const auto& record) { return record.first.find_first_of(L"\r\n") != std::wstring::npos; });
  if (reloaded != loaded) __builtin_trap();
  return 0;
}
