#include "patch/delta_fetch.h"

#include <fstream>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>

#include "crypto/sha256.h"
#include "patch/chunk_index.h"
#include "patch/delta_plan.h"

namespace patch {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kCopyBufferSize = 1024 * 1024;
// What a rebuild holds in memory is bounded: the index text, and some 300
// bytes for each chunk of either copy (a 16 GiB file at today's minimum).
constexpr std::uint64_t kMaxIndexBytes = 64 * 1024 * 1024;
constexpr std::uint64_t kMaxChunks = 1024 * 1024;

bool FetchIndex(const net::CHttpClient& http, const SManifestEntry& entry, const std::wstring& url,
                SChunkIndex& index, std::wstring& why) {
  if (entry.chunkIndexSize > kMaxIndexBytes) {
    why = L"its chunk index is larger than a launcher reads";
    return false;
  }
  const net::SHttpGetResult got = http.Get(url, entry.chunkIndexSize);
  if (!got.ok) {
    why = L"its chunk index could not be fetched: " + got.error;
    return false;
  }
  std::wstring digest;
  std::wstring ignored;
  if (got.body.size() != entry.chunkIndexSize ||
      !crypto::HashMemorySha256(got.body.data(), got.body.size(), digest, ignored) ||
      digest != entry.chunkIndexSha256) {
    why = L"its chunk index did not match its signed hash";
    return false;
  }
  const std::string_view text(reinterpret_cast<const char*>(got.body.data()), got.body.size());
  if (!ParseChunkIndex(text, index) || index.fileSize != entry.size) {
    why = L"its chunk index is malformed";
    return false;
  }
  return true;
}

// Writes the plan's pieces in order, hashing the whole file as it goes and
// each fetched chunk against the index.
class CDeltaWriter {
 public:
  CDeltaWriter(const SChunkIndex& wanted, const fs::path& oldFile, const fs::path& output)
      : wanted_(wanted), old_(oldFile, std::ios::binary), out_(output, std::ios::binary | std::ios::trunc) {}

  bool Opened(std::wstring& why) {
    if (old_ && out_) return true;
    why = L"the old file or the rebuilt one could not be opened";
    return false;
  }

  bool Copy(const SDeltaPiece& piece, std::wstring& why) {
    old_.seekg(static_cast<std::streamoff>(piece.source));
    for (std::uint64_t left = piece.length; left > 0;) {
      const std::size_t count = left < kCopyBufferSize ? static_cast<std::size_t>(left) : kCopyBufferSize;
      if (!old_.read(reinterpret_cast<char*>(Buffer()), static_cast<std::streamsize>(count))) {
        why = L"the old file could not be read again";
        return false;
      }
      if (!Write({Buffer(), count}, why)) return false;
      left -= count;
    }
    return true;
  }

  bool Fetch(const net::CHttpClient& http, const std::wstring& url, const SDeltaPiece& piece,
             CDeltaProgress& progress, std::wstring& why) {
    chunk_ = piece.firstChunk;
    intoChunk_ = 0;
    const net::SRangeResult range = http.FetchRange(url, piece.offset, piece.length, [&](std::span<const std::uint8_t> bytes) {
      progress.Fetched(bytes.size());
      return Write(bytes, why) && CheckChunks(bytes, why);
    });
    if (range.ok) return true;
    if (why.empty()) why = L"a range of it could not be fetched: " + range.error;
    return false;
  }

  bool Finish(const std::wstring& sha256, std::wstring& why) {
    out_.close();
    std::wstring digest;
    std::wstring ignored;
    if (out_.fail() || !whole_.Finish(digest, ignored)) {
      why = L"the rebuilt file could not be written";
      return false;
    }
    if (digest == sha256) return true;
    why = L"the rebuilt file did not match its signed hash";
    return false;
  }

 private:
  std::uint8_t* Buffer() {
    if (!buffer_) buffer_ = std::make_unique_for_overwrite<std::uint8_t[]>(kCopyBufferSize);
    return buffer_.get();
  }

  bool Write(std::span<const std::uint8_t> bytes, std::wstring& why) {
    whole_.Feed(bytes.data(), bytes.size());
    if (out_.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()))) {
      return true;
    }
    why = L"the rebuilt file could not be written";
    return false;
  }

  // Hashes fetched bytes chunk by chunk; the range never runs past its last chunk.
  bool CheckChunks(std::span<const std::uint8_t> bytes, std::wstring& why) {
    while (!bytes.empty()) {
      const SChunk& chunk = wanted_.chunks[chunk_];
      if (!chunkHash_) chunkHash_.emplace();
      const std::size_t take = std::min<std::size_t>(bytes.size(), chunk.length - intoChunk_);
      chunkHash_->Feed(bytes.data(), take);
      bytes = bytes.subspan(take);
      intoChunk_ += take;
      if (intoChunk_ < chunk.length) break;
      std::wstring digest;
      std::wstring ignored;
      const bool matches = chunkHash_->Finish(digest, ignored) && digest == chunk.sha256;
      chunkHash_.reset();
      if (!matches) {
        why = L"a fetched chunk did not match its hash";
        return false;
      }
      ++chunk_;
      intoChunk_ = 0;
    }
    return true;
  }

  const SChunkIndex& wanted_;
  std::ifstream old_;
  std::ofstream out_;
  std::unique_ptr<std::uint8_t[]> buffer_;
  crypto::CSha256FileStream whole_;
  std::optional<crypto::CSha256FileStream> chunkHash_;
  std::size_t chunk_ = 0;
  std::uint32_t intoChunk_ = 0;
};

bool Rebuild(const net::CHttpClient& http, const SDeltaSource& source, const SManifestEntry& entry,
             const SChunkIndex& wanted, const SDeltaPlan& plan, const fs::path& output, CDeltaProgress& progress,
             std::wstring& why) {
  CDeltaWriter writer(wanted, source.oldFile, output);
  if (!writer.Opened(why)) return false;
  for (const SDeltaPiece& piece : plan.pieces) {
    if (!(piece.fetched ? writer.Fetch(http, source.blobUrl, piece, progress, why) : writer.Copy(piece, why))) {
      return false;
    }
  }
  return writer.Finish(entry.sha256, why);
}

}  // namespace

bool FetchByDelta(const net::CHttpClient& http, const SManifestEntry& entry, const SDeltaSource& source,
                  const fs::path& output, CDeltaProgress& progress, std::wstring& summary) {
  summary.clear();
  SChunkIndex wanted;
  if (!FetchIndex(http, entry, source.indexUrl, wanted, summary)) return false;
  std::error_code ec;
  const std::uint64_t oldSize = fs::file_size(source.oldFile, ec);
  if (ec || oldSize / wanted.parameters.minSize > kMaxChunks) {
    summary = L"its old copy is too large to cut into chunks";
    return false;
  }
  SChunkIndex held;
  std::wstring ignoredDigest;
  if (!ChunkFile(source.oldFile, wanted.parameters, held, ignoredDigest, summary)) return false;
  const SDeltaPlan plan = PlanDelta(wanted, held);
  if (plan.fetchBytes == entry.size) {
    summary = L"the old file holds none of its chunks";
    return false;
  }
  progress.Planned(entry.chunkIndexSize + plan.fetchBytes);
  progress.Fetched(entry.chunkIndexSize);

  fs::create_directories(output.parent_path(), ec);
  if (!Rebuild(http, source, entry, wanted, plan, output, progress, summary)) {
    fs::remove(output, ec);
    return false;
  }
  summary = L"fetched " + std::to_wstring(plan.fetchBytes) + L" of " + std::to_wstring(entry.size) + L" bytes in " +
            std::to_wstring(plan.fetchRequests) + L" range(s)";
  return true;
}

}  // namespace patch
