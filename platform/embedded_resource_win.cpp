#include "platform/embedded_resource.h"

#include <windows.h>

namespace platform {

std::span<const std::uint8_t> LoadEmbeddedResource(int id) {
  HRSRC found = FindResourceW(nullptr, MAKEINTRESOURCEW(id), MAKEINTRESOURCEW(10) /* RT_RCDATA */);
  if (!found) return {};
  HGLOBAL loaded = LoadResource(nullptr, found);
  const DWORD size = SizeofResource(nullptr, found);
  const void* bytes = loaded ? LockResource(loaded) : nullptr;
  if (!bytes || size == 0) return {};
  return {static_cast<const std::uint8_t*>(bytes), size};
}

}  // namespace platform
