#include "platform/module_path.h"

#include <windows.h>

namespace platform {

std::wstring QueryModulePath() {
  wchar_t buffer[kModulePathBufferChars] = {};
  const DWORD length = GetModuleFileNameW(nullptr, buffer, static_cast<DWORD>(kModulePathBufferChars));
  return std::wstring(buffer, length);
}

}  // namespace platform
