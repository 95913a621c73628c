#pragma once
// Content-defined chunking (FastCDC with a 64-bit gear hash): cut points
// depend only on the bytes near them, so an insertion early in a file moves
// the chunks after it without changing them. The publisher cuts each large
// file this way; a launcher cuts its old copy with the same parameters and
// keeps every chunk whose hash is still listed.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace patch {

// The only chunking method so far; the name travels in each chunk index so a
// later one can be told apart.
inline constexpr std::string_view kChunkerName = "fastcdc-gear64";

struct SChunkerParameters {
  std::uint32_t minSize = 0;
  std::uint32_t averageSize = 0;  // a power of two
  std::uint32_t maxSize = 0;

  bool operator==(const SChunkerParameters&) const = default;
};

// What the publisher uses today; an index records its own.
inline constexpr SChunkerParameters kDefaultChunking{16 * 1024, 64 * 1024, 256 * 1024};

// 64 <= min < average < max <= 16 MiB, average a power of two.
bool AreUsableChunkerParameters(const SChunkerParameters& parameters);

// The length of the chunk that starts at `data[0]`. `data` holds the rest of
// the file, or at least `maxSize` bytes of it; the result is at most that.
std::size_t NextChunkLength(const SChunkerParameters& parameters, std::span<const std::uint8_t> data);

}  // namespace patch
