#include "patch/chunk_index.h"

#include <charconv>
#include <fstream>
#include <memory>

#include "crypto/sha256.h"
#include "crypto/sha256_hasher.h"
#include "patch/blob_path.h"
#include "platform/path_text.h"

namespace patch {
namespace {

constexpr std::string_view kHeader = "vardeni-chunk-index 1";
constexpr std::size_t kReadBlock = 4 * 1024 * 1024;

// The next LF-terminated line; false at the end or on a line without its LF.
bool NextLine(std::string_view& text, std::string_view& line) {
  const std::size_t end = text.find('\n');
  if (end == std::string_view::npos) return false;
  line = text.substr(0, end);
  text.remove_prefix(end + 1);
  return true;
}

// Splits "a b c" into exactly `count` fields separated by single spaces.
bool SplitFields(std::string_view line, std::string_view* fields, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t space = i + 1 < count ? line.find(' ') : line.size();
    if (space == std::string_view::npos || space == 0) return false;
    fields[i] = line.substr(0, space);
    line.remove_prefix(std::min(space + 1, line.size()));
  }
  return line.empty();
}

template <typename Number>
bool ReadNumber(std::string_view text, Number& value) {
  if (text.empty() || (text.size() > 1 && text[0] == '0')) return false;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size();
}

bool ReadChunk(std::string_view line, SChunk& chunk) {
  std::string_view fields[3];
  if (!SplitFields(line, fields, 3) || !ReadNumber(fields[0], chunk.offset) || !ReadNumber(fields[1], chunk.length)) {
    return false;
  }
  chunk.sha256.assign(fields[2].begin(), fields[2].end());
  return IsSha256Hex(chunk.sha256);
}

bool ReadHead(std::string_view& text, SChunkIndex& index) {
  std::string_view line;
  std::string_view fields[4];
  if (!NextLine(text, line) || line != kHeader) return false;
  if (!NextLine(text, line) || !SplitFields(line, fields, 4) || fields[0] != kChunkerName) return false;
  SChunkerParameters& p = index.parameters;
  if (!ReadNumber(fields[1], p.minSize) || !ReadNumber(fields[2], p.averageSize) ||
      !ReadNumber(fields[3], p.maxSize) || !AreUsableChunkerParameters(p)) {
    return false;
  }
  return NextLine(text, line) && SplitFields(line, fields, 2) && fields[0] == "size" &&
         ReadNumber(fields[1], index.fileSize);
}

// The file's chunks and digests while it is read once, block by block.
class CFileChunker {
 public:
  CFileChunker(const SChunkerParameters& parameters, SChunkIndex& index) : parameters_(parameters), index_(index) {}

  bool Run(std::ifstream& in, crypto::CSha256FileStream& whole, std::wstring& error) {
    const std::size_t capacity = kReadBlock + parameters_.maxSize;
    const auto buffer = std::make_unique<std::uint8_t[]>(capacity);
    std::size_t held = 0;
    bool atEnd = false;
    while (!atEnd || held != 0) {
      if (!atEnd) {
        in.read(reinterpret_cast<char*>(buffer.get() + held), static_cast<std::streamsize>(capacity - held));
        const auto got = static_cast<std::size_t>(in.gcount());
        whole.Feed(buffer.get() + held, got);
        held += got;
        atEnd = !in;
        if (in.bad()) return false;
      }
      // Cut while a whole maximum chunk is in view (or the file has ended).
      std::size_t used = 0;
      while (held - used != 0 && (atEnd || held - used >= parameters_.maxSize)) {
        const std::size_t length = NextChunkLength(parameters_, {buffer.get() + used, held - used});
        if (!AddChunk(buffer.get() + used, length, error)) return false;
        used += length;
      }
      std::copy(buffer.get() + used, buffer.get() + held, buffer.get());
      held -= used;
    }
    return true;
  }

 private:
  bool AddChunk(const std::uint8_t* bytes, std::size_t length, std::wstring& error) {
    SChunk chunk{index_.fileSize, static_cast<std::uint32_t>(length), {}};
    if (!crypto::HashMemorySha256(bytes, length, chunk.sha256, error)) return false;
    index_.chunks.push_back(std::move(chunk));
    index_.fileSize += length;
    return true;
  }

  const SChunkerParameters& parameters_;
  SChunkIndex& index_;
};

}  // namespace

std::string WriteChunkIndex(const SChunkIndex& index) {
  const SChunkerParameters& p = index.parameters;
  std::string text(kHeader);
  text += "\n" + std::string(kChunkerName) + " " + std::to_string(p.minSize) + " " + std::to_string(p.averageSize) +
          " " + std::to_string(p.maxSize) + "\nsize " + std::to_string(index.fileSize) + "\n";
  for (const SChunk& chunk : index.chunks) {
    text += std::to_string(chunk.offset) + " " + std::to_string(chunk.length) + " ";
    text.append(chunk.sha256.begin(), chunk.sha256.end()).append("\n");
  }
  return text;
}

bool ParseChunkIndex(std::string_view text, SChunkIndex& index) {
  SChunkIndex parsed;
  if (!ReadHead(text, parsed)) return false;
  std::uint64_t covered = 0;
  std::string_view line;
  while (NextLine(text, line)) {
    SChunk chunk;
    if (!ReadChunk(line, chunk) || chunk.offset != covered || chunk.length == 0 ||
        chunk.length > parsed.parameters.maxSize || chunk.length > parsed.fileSize - covered) {
      return false;
    }
    // Only the last chunk may fall short of the minimum.
    if (!parsed.chunks.empty() && parsed.chunks.back().length < parsed.parameters.minSize) return false;
    covered += chunk.length;
    parsed.chunks.push_back(std::move(chunk));
  }
  if (!text.empty() || covered != parsed.fileSize) return false;
  index = std::move(parsed);
  return true;
}

bool ChunkFile(const std::filesystem::path& file, const SChunkerParameters& parameters, SChunkIndex& index,
               std::wstring& wholeSha256, std::wstring& error) {
  index = SChunkIndex{parameters, 0, {}};
  wholeSha256.clear();
  std::ifstream in(file, std::ios::binary);
  crypto::CSha256FileStream whole;
  if (!in || !CFileChunker(parameters, index).Run(in, whole, error)) {
    if (error.empty()) error = L"could not read " + platform::FromPath(file);
    return false;
  }
  return whole.Finish(wholeSha256, error);
}

}  // namespace patch
