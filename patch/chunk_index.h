#pragma once
// The chunk index of a large file: how the publisher cut it into
// content-defined chunks and each chunk's SHA-256. It is published as a
// content-addressed blob of its own, named by the file's list entry, so a
// launcher holding an older copy fetches only the chunks it lacks (as byte
// ranges of the whole-file blob). Text form, ASCII, one line each:
//   "vardeni-chunk-index 1"
//   "<chunker name> <min> <average> <max>"
//   "size <file size>"
//   "<offset> <length> <sha256>"   (one per chunk, in file order)

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "patch/content_chunker.h"

namespace patch {

struct SChunk {
  std::uint64_t offset = 0;
  std::uint32_t length = 0;
  std::wstring sha256;

  bool operator==(const SChunk&) const = default;
};

struct SChunkIndex {
  SChunkerParameters parameters;
  std::uint64_t fileSize = 0;
  std::vector<SChunk> chunks;

  bool operator==(const SChunkIndex&) const = default;
};

std::string WriteChunkIndex(const SChunkIndex& index);

// True only for a well-formed index of usable parameters whose chunks tile
// the file exactly: each starts where the one before ended, none is longer
// than the maximum or (but the last) shorter than the minimum, and together
// they cover the file size. `index` is filled only then.
bool ParseChunkIndex(std::string_view text, SChunkIndex& index);

// Cuts the file with `parameters` and hashes each chunk and the whole file in
// one read. False with a sentence naming the file when it cannot be read.
bool ChunkFile(const std::filesystem::path& file, const SChunkerParameters& parameters, SChunkIndex& index,
               std::wstring& wholeSha256, std::wstring& error);

}  // namespace patch
