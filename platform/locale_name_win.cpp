#include "platform/locale_name.h"

#include <windows.h>

namespace platform {

std::optional<std::wstring> UserDefaultLocaleName() {
  wchar_t name[LOCALE_NAME_MAX_LENGTH] = {};
  const int length = GetUserDefaultLocaleName(name, LOCALE_NAME_MAX_LENGTH);
  if (length <= 1) return std::nullopt;
  return std::wstring(name, static_cast<size_t>(length - 1));
}

}  // namespace platform
