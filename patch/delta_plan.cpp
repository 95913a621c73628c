#include "patch/delta_plan.h"

#include <string>
#include <unordered_map>

namespace patch {

SDeltaPlan PlanDelta(const SChunkIndex& wanted, const SChunkIndex& held) {
  // A chunk is known by its hash and length; the first copy of each is used.
  std::unordered_map<std::wstring, const SChunk*> oldChunks;
  for (const SChunk& chunk : held.chunks) oldChunks.emplace(chunk.sha256, &chunk);

  SDeltaPlan plan;
  for (std::size_t i = 0; i < wanted.chunks.size(); ++i) {
    const SChunk& chunk = wanted.chunks[i];
    const auto found = oldChunks.find(chunk.sha256);
    const SChunk* old = found != oldChunks.end() && found->second->length == chunk.length ? found->second : nullptr;
    SDeltaPiece* last = plan.pieces.empty() ? nullptr : &plan.pieces.back();
    const bool extends = last != nullptr && (old == nullptr ? last->fetched
                                                            : !last->fetched && last->source + last->length == old->offset);
    if (extends) {
      last->length += chunk.length;
      ++last->chunkCount;
    } else {
      plan.pieces.push_back({old == nullptr, chunk.offset, old == nullptr ? 0 : old->offset, chunk.length, i, 1});
      if (old == nullptr) ++plan.fetchRequests;
    }
    if (old == nullptr) plan.fetchBytes += chunk.length;
  }
  return plan;
}

}  // namespace patch
