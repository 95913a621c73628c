#pragma once
// The running executable's own path, as the OS reports it.

#include <cstddef>
#include <string>

namespace platform {

// The buffer GetModuleFileNameW is given, in characters. Callers treat an
// answer of this length minus one or more as possibly cut off.
inline constexpr std::size_t kModulePathBufferChars = 260;

// Exactly the characters the OS call reported (its length is the call's
// result); empty when the call failed. On Linux the whole link target of
// "/proc/self/exe" is read, so the length is its real length in characters.
std::wstring QueryModulePath();

}  // namespace platform
