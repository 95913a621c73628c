#pragma once
// The channel pointer: a tiny mutable file on the patch host holding only the
// current release number of its channel. The update list and its signature are
// published under names derived from that number and never change afterwards.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace patch {

// "pointer-beta.txt" for exactly "beta" (case-sensitive), "pointer.txt" for
// every other channel, "Beta" included.
std::wstring ChannelPointerFileName(std::wstring_view channel);

// The most of the pointer that is read: a release number has at most 20
// digits, the rest is room for blanks and line ends.
inline constexpr std::size_t kMaxChannelPointerBytes = 256;

// The pointer's text without surrounding space, tab, CR and LF must be one or
// more decimal digits, fit in 64 bits and not be zero.
bool ParseChannelPointer(std::string_view bytes, std::uint64_t& release);

// "patchlist.v" + release + ".json" and the same stem + ".sig".
std::wstring ManifestFileName(std::uint64_t release);
std::wstring SignatureFileName(std::uint64_t release);

}  // namespace patch
