// A message from the page.
#include <cstddef>
#include <cstdint>

#include "app/page_command.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  SBridgeRequest request;
  if (ParseBridgeCommand({reinterpret_cast<const char*>(data), size}, request) &&
      request.command == EBridgeCommand::None) {
    __builtin_trap();
  }
  return 0;
}
