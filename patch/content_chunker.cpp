#include "patch/content_chunker.h"

#include <algorithm>
#include <array>
#include <bit>

namespace patch {
namespace {

constexpr std::uint32_t kSmallestChunk = 64;
constexpr std::uint32_t kLargestChunk = 16 * 1024 * 1024;

// The gear table: 256 fixed pseudo-random words (splitmix64 from a fixed
// seed). Cut points of every index ever published depend on it: never change it.
constexpr std::array<std::uint64_t, 256> MakeGearTable() {
  std::array<std::uint64_t, 256> table{};
  std::uint64_t state = 0x7661726465'6e6931ull;
  for (std::uint64_t& word : table) {
    state += 0x9e3779b97f4a7c15ull;
    std::uint64_t z = state;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
    word = z ^ (z >> 31);
  }
  return table;
}
constexpr std::array<std::uint64_t, 256> kGear = MakeGearTable();

// The top `bits` bits of the hash: those mix in the most recent 64 bytes.
constexpr std::uint64_t TopBitsMask(unsigned bits) { return bits == 0 ? 0 : ~std::uint64_t{0} << (64 - bits); }

}  // namespace

bool AreUsableChunkerParameters(const SChunkerParameters& p) {
  return p.minSize >= kSmallestChunk && p.minSize < p.averageSize && p.averageSize < p.maxSize &&
         p.maxSize <= kLargestChunk && std::has_single_bit(p.averageSize);
}

std::size_t NextChunkLength(const SChunkerParameters& parameters, std::span<const std::uint8_t> data) {
  if (data.size() <= parameters.minSize) return data.size();
  const std::size_t limit = std::min<std::size_t>(data.size(), parameters.maxSize);
  const std::size_t normal = std::min<std::size_t>(limit, parameters.averageSize);
  // Normalised chunking: harder to cut before the average, easier after, so
  // sizes gather around the average.
  const auto bits = static_cast<unsigned>(std::countr_zero(parameters.averageSize));
  const std::uint64_t strictMask = TopBitsMask(bits + 2);
  const std::uint64_t looseMask = TopBitsMask(bits > 2 ? bits - 2 : 1);
  std::uint64_t hash = 0;
  std::size_t i = parameters.minSize;
  for (; i < normal; ++i) {
    hash = (hash << 1) + kGear[data[i]];
    if ((hash & strictMask) == 0) return i + 1;
  }
  for (; i < limit; ++i) {
    hash = (hash << 1) + kGear[data[i]];
    if ((hash & looseMask) == 0) return i + 1;
  }
  return limit;
}

}  // namespace patch
