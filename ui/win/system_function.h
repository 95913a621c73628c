#pragma once
// A function of a system DLL looked up by name, so the launcher still starts
// on Windows versions that lack it.

#include "ui/win/win32.h"

namespace ui {

// The function, or null when the module is not loaded or has no such export.
template <typename TFunction>
TFunction SystemFunction(const wchar_t* module, const char* name) {
  const HMODULE handle = GetModuleHandleW(module);
  if (handle == nullptr) return nullptr;
  return reinterpret_cast<TFunction>(reinterpret_cast<void*>(GetProcAddress(handle, name)));
}

}  // namespace ui
