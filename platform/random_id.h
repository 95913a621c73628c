#pragma once
// A fresh random 128-bit identifier from the operating system.

#include <array>
#include <cstdint>

namespace platform {

using RandomId = std::array<std::uint8_t, 16>;

// CoCreateGuid (the GUID's bytes as it lies in memory) / 16 bytes of
// getrandom. False when the system could not provide one.
bool GenerateRandomId(RandomId& id);

}  // namespace platform
