// The channel pointer file: a release number and nothing else.
#include <cstddef>
#include <cstdint>

#include "patch/channel_pointer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::uint64_t release = 0;
  if (patch::ParseChannelPointer({reinterpret_cast<const char*>(data), size}, release) && release == 0) {
    __builtin_trap();
  }
  return 0;
}
