#include "platform/random_id.h"

#include <objbase.h>
#include <windows.h>

#include <cstring>

namespace platform {

bool GenerateRandomId(RandomId& id) {
  GUID guid{};
  if (FAILED(CoCreateGuid(&guid))) return false;
  static_assert(sizeof(guid) == sizeof(id));
  std::memcpy(id.data(), &guid, sizeof(guid));
  return true;
}

}  // namespace platform
