#include "platform/locale_name.h"

#include <cstdlib>

#include "text/utf.h"

namespace platform {

std::optional<std::wstring> UserDefaultLocaleName() {
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(variable);
    if (value == nullptr || *value == '\0') continue;
    std::wstring name = text::Utf8ToWide(value);
    if (name.empty()) return std::nullopt;
    return name;
  }
  return std::nullopt;
}

}  // namespace platform
