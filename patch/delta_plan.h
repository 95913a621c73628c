#pragma once
// Which parts of a file's new content an old copy already holds: the new
// chunk index against the old copy cut with the same parameters. What the
// old copy lacks is fetched; adjacent pieces of either kind are merged, so
// missing neighbours cost one request.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "patch/chunk_index.h"

namespace patch {

struct SDeltaPiece {
  bool fetched = false;       // from the host; otherwise copied from the old file
  std::uint64_t offset = 0;   // where it starts in the new file (and in the blob)
  std::uint64_t source = 0;   // where it starts in the old file, when copied
  std::uint64_t length = 0;
  std::size_t firstChunk = 0;  // of the new index
  std::size_t chunkCount = 0;
};

struct SDeltaPlan {
  std::vector<SDeltaPiece> pieces;  // in new-file order, tiling it
  std::uint64_t fetchBytes = 0;
  std::size_t fetchRequests = 0;
};

// `wanted`: the new content's index; `held`: the old copy's chunks.
SDeltaPlan PlanDelta(const SChunkIndex& wanted, const SChunkIndex& held);

}  // namespace patch
