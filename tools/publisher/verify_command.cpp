// verify: walks a patch host the way a launcher does (pointer, update list,
// signature) and then checks every blob the list needs, reporting each
// problem rather than stopping at the first.

#include <fstream>
#include <map>
#include <set>
#include <vector>

#include "crypto/sha256.h"
#include "patch/blob_path.h"
#include "patch/channel_pointer.h"
#include "patch/chunk_index.h"
#include "patch/manifest.h"
#include "text/json.h"
#include "tools/publisher/command_support.h"
#include "tools/publisher/commands.h"
#include "tools/publisher/console.h"
#include "tools/publisher/patch_host.h"
#include "tools/publisher/signature_file.h"

namespace publisher {
namespace {

constexpr SOptionSpec kVerifyOptions[] = {{L"host"}, {L"key-hex", true, true}, {L"channel"}};
constexpr std::wstring_view kVerifyHelp =
    L"Usage: vardeni-publish verify --host <folder or https address> --key-hex <64 hex>\n"
    L"         [--key-hex <64 hex>] [--channel <name>]\n"
    L"\n"
    L"Checks a patch host as a launcher built with these public keys would see it:\n"
    L"the channel pointer (channel stable unless given), the update list it names and\n"
    L"its signature, then that every blob the list needs is present with the right\n"
    L"size and SHA-256, and that every chunk index tiles its file and names its bytes.\n"
    L"Every problem is reported; the exit status is 1 if any.";

constexpr std::size_t kMaxKeys = 2;

// What one blob must hold, and the first path that needs it.
struct SBlobNeed {
  std::uint64_t size = 0;
  std::wstring neededBy;
};

class CHostVerification {
 public:
  CHostVerification(const CPatchHost& host, std::array<PublicKey, 2> keys, std::size_t keyCount, std::wstring channel)
      : host_(host), keys_(keys), keyCount_(keyCount), channel_(std::move(channel)) {}

  // The number of problems found.
  std::size_t Run() {
    patch::SManifest list;
    if (ReadAcceptedList(list)) {
      CheckBlobs(list);
      CheckChunkIndexes(list);
    }
    PrintLine(problems_ == 0 ? std::wstring(L"host verified: no problems")
                             : std::to_wstring(problems_) + L" problem(s) found");
    return problems_;
  }

 private:
  void Problem(const std::wstring& text) {
    PrintError(L"problem: " + text);
    ++problems_;
  }

  bool ReadAcceptedList(patch::SManifest& list) {
    const std::wstring pointerName = patch::ChannelPointerFileName(channel_);
    std::string bytes;
    std::wstring error;
    std::uint64_t release = 0;
    if (!host_.Read(pointerName, bytes, error)) {
      Problem(error);
      return false;
    }
    if (!patch::ParseChannelPointer(bytes, release)) {
      Problem(host_.Where(pointerName) + L": not a release number");
      return false;
    }
    PrintLine(pointerName + L": release " + std::to_wstring(release));

    const std::wstring listName = patch::ManifestFileName(release);
    const std::wstring signatureName = patch::SignatureFileName(release);
    std::string listBytes;
    std::string signatures;
    bool available = host_.Read(listName, listBytes, error);
    if (!available) Problem(error);
    if (!host_.Read(signatureName, signatures, error)) {
      Problem(error);
      available = false;
    }
    if (!available) return false;

    const auto* message = reinterpret_cast<const std::uint8_t*>(listBytes.data());
    const patch::EManifestVerdict verdict =
        patch::AcceptManifest(message, listBytes.size(), signatures, release, channel_, 0, keys_, list);
    if (verdict != patch::EManifestVerdict::Valid) {
      Problem(host_.Where(listName) + L": " + patch::ManifestVerdictText(verdict));
      return false;
    }
    std::wstring signers;
    for (std::size_t k = 0; k < keyCount_; ++k) {
      if (IsSignedBy(signatures, keys_[k], message, listBytes.size())) {
        signers += (signers.empty() ? L"key " : L", key ") + std::to_wstring(k + 1);
      }
    }
    PrintLine(listName + L": accepted for channel " + channel_ + L", " + std::to_wstring(list.files.size()) +
              L" files" + (list.hasLauncher ? L", launcher " + list.launcherProductVersion : L"") +
              L", signed by " + signers);
    CheckDroppedEntries(listName, listBytes, list);
    return true;
  }

  // The launcher drops malformed entries silently; an operator wants to know.
  void CheckDroppedEntries(const std::wstring& listName, const std::string& listBytes, const patch::SManifest& list) {
    text::CJsonValue root;
    std::wstring wide(listBytes.begin(), listBytes.end());  // accepted, so pure ASCII
    const text::CJsonValue* files = text::ParseJson(wide, root) ? root.Find(L"files") : nullptr;
    const std::size_t written = files != nullptr && files->IsArray() ? files->AsArray().size() : 0;
    if (written > list.files.size()) {
      Problem(host_.Where(listName) + L": " + std::to_wstring(written - list.files.size()) +
              L" file entries are malformed and a launcher ignores them");
    }
    if (list.files.empty()) Problem(host_.Where(listName) + L": The update list contains no usable files.");
  }

  void CheckBlobs(const patch::SManifest& list) {
    std::map<std::wstring, SBlobNeed> needs;  // ordered, so reports come in digest order
    for (const patch::SManifestEntry& entry : list.files) {
      Need(entry.sha256, entry.size, entry.path, needs);
      if (!entry.chunkIndexSha256.empty()) {
        Need(entry.chunkIndexSha256, entry.chunkIndexSize, L"the chunk index of " + entry.path, needs);
      }
    }
    if (list.hasLauncher) Need(list.launcherSha256, list.launcherSize, L"the launcher", needs);
    for (const auto& [sha256, need] : needs) {
      if (CheckBlob(sha256, need)) intact_.insert(sha256);
    }
    PrintLine(L"blobs: " + std::to_wstring(needs.size()) + L" needed, " + std::to_wstring(intact_.size()) +
              L" intact");
  }

  // Each index of an intact file must read, tile the file and name its bytes:
  // a launcher would otherwise fall back to whole downloads without a word.
  void CheckChunkIndexes(const patch::SManifest& list) {
    std::set<std::wstring> checked;
    std::size_t sound = 0;
    for (const patch::SManifestEntry& entry : list.files) {
      if (entry.chunkIndexSha256.empty() || !intact_.contains(entry.sha256) ||
          !intact_.contains(entry.chunkIndexSha256) || !checked.insert(entry.chunkIndexSha256).second) {
        continue;
      }
      sound += CheckChunkIndex(entry) ? 1 : 0;
    }
    if (!checked.empty()) {
      PrintLine(L"chunk indexes: " + std::to_wstring(checked.size()) + L" checked, " + std::to_wstring(sound) +
                L" sound");
    }
  }

  bool CheckChunkIndex(const patch::SManifestEntry& entry) {
    const std::wstring indexName = patch::BlobPathForHash(entry.chunkIndexSha256);
    const std::wstring forWhom = L" (the chunk index of " + entry.path + L")";
    std::string text;
    std::wstring error;
    patch::SChunkIndex index;
    if (!ReadFetched(indexName, entry.chunkIndexSize, text, error)) {
      Problem(error + forWhom);
      return false;
    }
    if (!patch::ParseChunkIndex(text, index) || index.fileSize != entry.size) {
      Problem(host_.Where(indexName) + L": not a chunk index that tiles the file's " + std::to_wstring(entry.size) +
              L" bytes" + forWhom);
      return false;
    }
    const std::wstring blobName = patch::BlobPathForHash(entry.sha256);
    std::filesystem::path local;
    bool missing = false;
    if (!host_.Fetch(blobName, entry.size, local, missing, error)) {
      Problem(error + forWhom);
      return false;
    }
    const std::size_t wrong = CountWrongChunks(local, index);
    host_.Release(local);
    if (wrong != 0) {
      Problem(host_.Where(indexName) + L": " + std::to_wstring(wrong) + L" of " + std::to_wstring(index.chunks.size()) +
              L" chunks do not match the bytes of " + host_.Where(blobName) + forWhom);
    }
    return wrong == 0;
  }

  bool ReadFetched(const std::wstring& name, std::uint64_t size, std::string& bytes, std::wstring& error) {
    std::filesystem::path local;
    bool missing = false;
    if (!host_.Fetch(name, size, local, missing, error)) return false;
    bytes.assign(size, '\0');
    std::ifstream in(local, std::ios::binary);
    in.read(bytes.data(), static_cast<std::streamsize>(size));
    const bool read = in.gcount() == static_cast<std::streamsize>(size);
    host_.Release(local);
    if (!read) error = host_.Where(name) + L": could not be read";
    return read;
  }

  static std::size_t CountWrongChunks(const std::filesystem::path& file, const patch::SChunkIndex& index) {
    std::ifstream in(file, std::ios::binary);
    std::vector<std::uint8_t> chunk;
    std::size_t wrong = 0;
    for (const patch::SChunk& expected : index.chunks) {
      chunk.resize(expected.length);
      in.read(reinterpret_cast<char*>(chunk.data()), expected.length);
      std::wstring digest;
      std::wstring ignored;
      const bool same = in.gcount() == expected.length &&
                        crypto::HashMemorySha256(chunk.data(), chunk.size(), digest, ignored) &&
                        digest == expected.sha256;
      wrong += same ? 0 : 1;
    }
    return wrong;
  }

  void Need(const std::wstring& sha256, std::uint64_t size, const std::wstring& path,
            std::map<std::wstring, SBlobNeed>& needs) {
    const auto [need, inserted] = needs.try_emplace(sha256, SBlobNeed{size, path});
    if (!inserted && need->second.size != size) {
      Problem(path + L" and " + need->second.neededBy + L" have the same SHA-256 but different sizes");
    }
  }

  bool CheckBlob(const std::wstring& sha256, const SBlobNeed& need) {
    const std::wstring name = patch::BlobPathForHash(sha256);
    const std::wstring forWhom = L" (needed by " + need.neededBy + L")";
    std::filesystem::path local;
    bool missing = false;
    std::wstring error;
    if (!host_.Fetch(name, need.size, local, missing, error)) {
      Problem(error + forWhom);
      return false;
    }
    std::error_code ec;
    const std::uintmax_t size = std::filesystem::file_size(local, ec);
    std::wstring digest;
    bool intact = false;
    if (ec || size != need.size) {
      Problem(host_.Where(name) + L": " + (ec ? std::wstring(L"size unreadable") : std::to_wstring(size)) +
              L" bytes, the list says " + std::to_wstring(need.size) + forWhom);
    } else if (!crypto::HashFileSha256(local, digest, error)) {
      Problem(host_.Where(name) + L": " + error + forWhom);
    } else if (digest != sha256) {
      Problem(host_.Where(name) + L": its content has SHA-256 " + digest + forWhom);
    } else {
      intact = true;
    }
    host_.Release(local);
    return intact;
  }

  const CPatchHost& host_;
  std::array<PublicKey, 2> keys_;
  std::size_t keyCount_;
  std::wstring channel_;
  std::size_t problems_ = 0;
  std::set<std::wstring> intact_;
};

}  // namespace

int RunVerify(const Arguments& arguments) {
  CParsedOptions options;
  if (auto stop = ParseCommandOptions(L"verify", arguments, kVerifyOptions, kVerifyHelp, options)) return *stop;
  std::wstring error;
  if (!RequireOptions(options, {L"host", L"key-hex"}, error)) return UsageError(L"verify", error);
  const std::vector<std::wstring>& hexKeys = options.Values(L"key-hex");
  if (hexKeys.size() > kMaxKeys) return UsageError(L"verify", L"a launcher is built with at most 2 public keys");
  std::array<PublicKey, 2> keys{};
  for (std::size_t k = 0; k < hexKeys.size(); ++k) {
    if (!ParsePublicKeyHex(hexKeys[k], keys[k], error)) return UsageError(L"verify", error);
  }
  const std::wstring channel = options.Has(L"channel") ? options.Value(L"channel") : L"stable";
  std::unique_ptr<CPatchHost> host;
  if (!OpenPatchHost(options.Value(L"host"), host, error)) return Failure(error);
  CHostVerification verification(*host, keys, hexKeys.size(), channel);
  return verification.Run() == 0 ? kExitSuccess : kExitFailure;
}

}  // namespace publisher
