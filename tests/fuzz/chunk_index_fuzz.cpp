// A chunk index as published: what parses must write back to the same index,
// and a plan against any copy tiles the file and counts what it fetches.
#include <cstddef>
#include <cstdint>

#include "patch/chunk_index.h"
#include "patch/delta_plan.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  patch::SChunkIndex index;
  if (!patch::ParseChunkIndex({reinterpret_cast<const char*>(data), size}, index)) return 0;
  patch::SChunkIndex again;
  if (!patch::ParseChunkIndex(patch::WriteChunkIndex(index), again) || !(again == index)) __builtin_trap();
  const patch::SDeltaPlan plan = patch::PlanDelta(index, index);
  std::uint64_t covered = 0;
  std::uint64_t fetched = 0;
  for (const patch::SDeltaPiece& piece : plan.pieces) {
    if (piece.offset != covered || piece.length == 0) __builtin_trap();
    covered += piece.length;
    if (piece.fetched) fetched += piece.length;
  }
  if (fetched != plan.fetchBytes || covered != index.fileSize) __builtin_trap();
  return 0;
}
