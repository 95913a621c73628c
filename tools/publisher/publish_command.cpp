// publish: a game folder becomes a release on the patch host. Blobs first,
// then the update list and its signatures, and only then the channel
// pointer, so a launcher never follows a pointer to something missing.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <optional>
#include <thread>
#include <unordered_map>

#include "crypto/sha256.h"
#include "patch/channel_pointer.h"
#include "patch/chunk_index.h"
#include "patch/manifest.h"
#include "patch/protected_paths.h"
#include "patch/version_order.h"
#include "platform/path_text.h"
#include "text/utf.h"
#include "tools/publisher/blob_store.h"
#include "tools/publisher/command_support.h"
#include "tools/publisher/commands.h"
#include "tools/publisher/console.h"
#include "tools/publisher/game_folder_scan.h"
#include "tools/publisher/host_files.h"
#include "tools/publisher/signature_file.h"
#include "tools/publisher/update_list_writer.h"

namespace publisher {
namespace {

constexpr SOptionSpec kPublishOptions[] = {
    {L"host"}, {L"game"},     {L"channel"},          {L"release"},    {L"key", true, true},
    {L"launcher"}, {L"launcher-version"}, {L"force", false},
};
constexpr std::wstring_view kPublishHelp =
    L"Usage: vardeni-publish publish --host <folder> --game <folder> --channel <stable|beta>\n"
    L"         --release <N> --key <secret file> [--key <secret file>]...\n"
    L"         [--launcher <exe> --launcher-version <x.y.z>] [--force]\n"
    L"\n"
    L"Publishes every file of the game folder as release N of the channel on the\n"
    L"patch host folder: new blobs under blobs/, the update list patchlist.vN.json,\n"
    L"its signature file patchlist.vN.sig (one line per key, at most 8) and finally\n"
    L"the channel pointer (pointer.txt or pointer-beta.txt). Blobs already on the\n"
    L"host are kept. Files the launcher could not install are skipped and listed.\n"
    L"\n"
    L"  --launcher, --launcher-version  also publish this launcher executable\n"
    L"  --force  allow a release number not above the channel's current one\n"
    L"           (launchers that saw a higher release refuse it)";

constexpr unsigned kMaxHashThreads = 4;
// Launchers read the list's numbers as doubles, exact only up to 2^53; a
// higher release would read back as another number than its pointer's.
constexpr std::uint64_t kMaxRelease = std::uint64_t{1} << 53;
constexpr std::size_t kProtectedSampleSize = 3;
// Files from this size on get a chunk index, so launchers can fetch only
// their changed chunks; below it a whole file costs little more than an index.
constexpr std::uint64_t kChunkIndexThreshold = 4 * 1024 * 1024;
// The longest chunk line ("<offset> <length> <sha256>\n") and the head, to
// bound an index's size before the file is cut.
constexpr std::uint64_t kChunkLineBound = 20 + 1 + 10 + 1 + 64 + 1;
constexpr std::uint64_t kChunkHeadBound = 128;
// Stands in for digests not computed yet: the list's size depends only on
// their length, so an oversized list is refused before anything is hashed.
const std::wstring kPlaceholderDigest(64, L'0');

using Clock = std::chrono::steady_clock;

struct SLauncherSource {
  std::filesystem::path file;
  std::wstring version;
  std::uint64_t size = 0;
  std::wstring sha256;
};

struct SPublishRequest {
  std::filesystem::path host;
  std::filesystem::path game;
  std::wstring channel;
  std::uint64_t release = 0;
  std::optional<SLauncherSource> launcher;
  bool force = false;
};

struct SBlobTally {
  std::size_t written = 0;
  std::size_t reused = 0;
  std::size_t repaired = 0;

  void Count(EBlobOutcome outcome) {
    switch (outcome) {
      case EBlobOutcome::Written: ++written; break;
      case EBlobOutcome::Reused: ++reused; break;
      case EBlobOutcome::Repaired: ++repaired; break;
    }
  }
};

std::wstring Seconds(Clock::duration duration) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f s", std::chrono::duration<double>(duration).count());
  return text::Utf8ToWide(text);
}

// True when one folder lies inside the other (or they are the same).
bool FoldersOverlap(const std::filesystem::path& a, const std::filesystem::path& b) {
  std::error_code ec;
  const std::filesystem::path first = std::filesystem::weakly_canonical(a, ec);
  const std::filesystem::path second = std::filesystem::weakly_canonical(b, ec);
  auto i = first.begin();
  auto j = second.begin();
  for (; i != first.end() && j != second.end(); ++i, ++j) {
    if (!i->empty() && !j->empty() && *i != *j) return false;
  }
  return true;
}

// Reads the options into a request; false with a usage error text.
bool ReadRequest(const CParsedOptions& options, SPublishRequest& request, std::wstring& error) {
  if (!RequireOptions(options, {L"host", L"game", L"channel", L"release", L"key"}, error)) return false;
  request.host = platform::ToPath(options.Value(L"host"));
  request.game = platform::ToPath(options.Value(L"game"));
  request.channel = options.Value(L"channel");
  if (request.channel != L"stable" && request.channel != L"beta") {
    error = L"--channel must be stable or beta";
    return false;
  }
  const std::wstring& release = options.Value(L"release");
  if (release.find_first_not_of(L"0123456789") != std::wstring::npos ||
      !patch::ParseChannelPointer(text::WideToUtf8(release), request.release) || request.release > kMaxRelease) {
    error = L"--release must be a whole number from 1 to " + std::to_wstring(kMaxRelease);
    return false;
  }
  if (options.Values(L"key").size() > kMaxSignatureLines) {
    error = L"at most " + std::to_wstring(kMaxSignatureLines) + L" keys: a launcher reads no more signatures";
    return false;
  }
  if (options.Has(L"launcher") != options.Has(L"launcher-version")) {
    error = L"--launcher and --launcher-version go together";
    return false;
  }
  if (options.Has(L"launcher")) {
    SLauncherSource launcher;
    launcher.file = platform::ToPath(options.Value(L"launcher"));
    launcher.version = options.Value(L"launcher-version");
    // Any parsable version above 0; a launcher compares it with its own.
    if (!patch::IsNewerVersion(launcher.version, L"0")) {
      error = L"--launcher-version must be a dotted version such as 1.0.6";
      return false;
    }
    request.launcher = std::move(launcher);
  }
  request.force = options.Has(L"force");
  return true;
}

class CPublishRun {
 public:
  CPublishRun(SPublishRequest request, SigningKeys keys)
      : request_(std::move(request)), keys_(std::move(keys)), blobs_(request_.host) {}

  bool Run(std::wstring& error) {
    const Clock::time_point start = Clock::now();
    if (!PrepareFolders(error) || !CheckReleaseNumber(error)) return false;
    const Clock::time_point scanStart = Clock::now();
    if (!ScanGame(error) || !CheckListSize(error)) return false;
    const Clock::time_point hashStart = Clock::now();
    if (!HashEverything(error)) return false;
    const Clock::time_point storeStart = Clock::now();
    if (!StoreBlobs(error) || !WriteListAndSignatures(error) || !MovePointer(error)) return false;
    const Clock::time_point end = Clock::now();
    PrintSummary();
    PrintLine(L"time: scan " + Seconds(hashStart - scanStart) + L", hash " + Seconds(storeStart - hashStart) +
              L", blobs and list " + Seconds(end - storeStart) + L", total " + Seconds(end - start));
    return true;
  }

 private:
  bool PrepareFolders(std::wstring& error) {
    std::error_code ec;
    if (!std::filesystem::is_directory(request_.game, ec)) {
      error = PathProblem(request_.game, L"is not a folder");
      return false;
    }
    std::filesystem::create_directories(request_.host, ec);
    if (!std::filesystem::is_directory(request_.host, ec)) {
      error = PathProblem(request_.host, L"could not be created as the host folder");
      return false;
    }
    if (FoldersOverlap(request_.host, request_.game)) {
      error = L"the host folder and the game folder must not lie inside one another";
      return false;
    }
    return true;
  }

  bool CheckReleaseNumber(std::wstring& error) {
    pointerFile_ = request_.host / platform::ToPath(patch::ChannelPointerFileName(request_.channel));
    listName_ = patch::ManifestFileName(request_.release);
    std::error_code ec;
    if (!std::filesystem::exists(pointerFile_, ec)) return true;
    std::string bytes;
    std::uint64_t current = 0;
    if (!ReadWholeFile(pointerFile_, 64, bytes, error) || !patch::ParseChannelPointer(bytes, current)) {
      if (request_.force) return true;
      error = PathProblem(pointerFile_, L"does not hold a release number; use --force to replace it");
      return false;
    }
    // A list above the current release was never pointed at (an earlier
    // publish stopped before its pointer), so it may be written again.
    if (request_.release > current) return true;
    const std::wstring comparison = L"release " + std::to_wstring(request_.release) + L" is not above the current " +
                                    request_.channel + L" release " + std::to_wstring(current);
    if (!request_.force) {
      error = comparison + L"; use --force to publish it anyway";
      return false;
    }
    PrintError(L"warning: " + comparison + L"; launchers that already saw release " + std::to_wstring(current) +
               L" will refuse this one");
    return true;
  }

  bool ScanGame(std::wstring& error) {
    if (!ScanGameFolder(request_.game, scan_, error)) return false;
    for (const SSkippedFile& skipped : scan_.skipped) PrintError(L"skipped " + skipped.path + L": " + skipped.reason);
    if (!scan_.caseClashes.empty()) {
      for (const std::wstring& clash : scan_.caseClashes) PrintError(L"same name apart from letter case: " + clash);
      error = L"files whose names differ only in letter case would overwrite each other on players' machines";
      return false;
    }
    if (scan_.files.empty()) {
      error = PathProblem(request_.game, L"holds no file that could be published");
      return false;
    }
    if (request_.launcher) {
      std::error_code ec;
      request_.launcher->size = std::filesystem::file_size(request_.launcher->file, ec);
      if (ec || !std::filesystem::is_regular_file(request_.launcher->file, ec)) {
        error = PathProblem(request_.launcher->file, L"is not a readable file");
        return false;
      }
    }
    NoteProtectedNames();
    return true;
  }

  // Published files that the launcher's orphan rules treat as the player's
  // own are installed normally but never removed when a later release drops them.
  void NoteProtectedNames() const {
    std::vector<std::wstring> protectedPaths;
    for (const SGameFile& file : scan_.files) {
      if (patch::IsProtectedPath(file.path)) protectedPaths.push_back(file.path);
    }
    if (protectedPaths.empty()) return;
    std::wstring sample;
    for (std::size_t i = 0; i < std::min(protectedPaths.size(), kProtectedSampleSize); ++i) {
      sample += (i ? L", " : L"") + protectedPaths[i];
    }
    PrintError(L"note: " + std::to_wstring(protectedPaths.size()) +
               L" file(s) have names launchers keep as the player's own (" + sample +
               L"); a later release that drops them leaves them on players' machines");
  }

  patch::SManifest Draft(bool withDigests) const {
    patch::SManifest list;
    list.version = request_.release;
    list.channel = request_.channel;
    list.generatedAt = generatedAt_;
    if (request_.launcher) {
      list.hasLauncher = true;
      list.launcherProductVersion = request_.launcher->version;
      list.launcherSize = request_.launcher->size;
      list.launcherSha256 = withDigests ? request_.launcher->sha256 : kPlaceholderDigest;
    }
    list.files.reserve(scan_.files.size());
    for (const SGameFile& file : scan_.files) {
      patch::SManifestEntry entry{file.path, file.size, withDigests ? file.sha256 : kPlaceholderDigest};
      if (file.size >= kChunkIndexThreshold) {
        entry.chunkIndexSha256 = withDigests ? file.chunkIndexSha256 : kPlaceholderDigest;
        entry.chunkIndexSize = withDigests ? file.chunkIndex.size() : ChunkIndexSizeBound(file.size);
      }
      list.files.push_back(std::move(entry));
    }
    return list;
  }

  // Every chunk but the last is at least the minimum long.
  static std::uint64_t ChunkIndexSizeBound(std::uint64_t fileSize) {
    const std::uint64_t chunks = fileSize / patch::kDefaultChunking.minSize + 1;
    return kChunkHeadBound + chunks * kChunkLineBound;
  }

  bool CheckListSize(std::wstring& error) {
    generatedAt_ = UtcTimestamp(std::chrono::system_clock::now());
    const std::size_t size = WriteUpdateList(Draft(false)).size();
    if (size <= patch::kMaxManifestBytes) return true;
    error = L"the update list would be " + std::to_wstring(size) + L" bytes for " +
            std::to_wstring(scan_.files.size()) + L" files, more than the " +
            std::to_wstring(patch::kMaxManifestBytes) +
            L" bytes a launcher accepts; publish fewer files (for example by packing small files into archives)";
    return false;
  }

  bool HashEverything(std::wstring& error) {
    std::vector<std::wstring> problems(scan_.files.size());
    std::atomic<std::size_t> next{0};
    const unsigned threads = std::clamp(std::thread::hardware_concurrency(), 1u, kMaxHashThreads);
    {
      std::vector<std::jthread> workers;
      for (unsigned t = 0; t < threads; ++t) {
        workers.emplace_back([&] {
          for (std::size_t i = next++; i < scan_.files.size(); i = next++) HashOne(scan_.files[i], problems[i]);
        });
      }
    }
    const auto problem = std::find_if(problems.begin(), problems.end(), [](auto& p) { return !p.empty(); });
    if (problem != problems.end()) {
      error = *problem;
      return false;
    }
    if (!request_.launcher) return true;
    if (!crypto::HashFileSha256(request_.launcher->file, request_.launcher->sha256, error)) {
      error = PathProblem(request_.launcher->file, error);
      return false;
    }
    return true;
  }

  // The size is read again after hashing: a file written meanwhile would give
  // an entry whose size and digest describe different bytes.
  static void HashOne(SGameFile& file, std::wstring& problem) {
    std::wstring error;
    if (!(file.size >= kChunkIndexThreshold ? HashAndChunk(file, error)
                                            : crypto::HashFileSha256(file.source, file.sha256, error))) {
      problem = PathProblem(file.source, error);
      return;
    }
    std::error_code ec;
    if (std::filesystem::file_size(file.source, ec) != file.size || ec) {
      problem = PathProblem(file.source, L"changed while it was being published; publish again");
    }
  }

  // The file's digest and chunk index in one read.
  static bool HashAndChunk(SGameFile& file, std::wstring& error) {
    patch::SChunkIndex index;
    if (!patch::ChunkFile(file.source, patch::kDefaultChunking, index, file.sha256, error)) return false;
    file.chunkIndex = patch::WriteChunkIndex(index);
    return crypto::HashMemorySha256(reinterpret_cast<const std::uint8_t*>(file.chunkIndex.data()),
                                    file.chunkIndex.size(), file.chunkIndexSha256, error);
  }

  bool StoreBlobs(std::wstring& error) {
    std::unordered_map<std::wstring, const SGameFile*> distinct;
    for (const SGameFile& file : scan_.files) distinct.try_emplace(file.sha256, &file);
    distinctBlobs_ = distinct.size();
    for (const SGameFile& file : scan_.files) {
      const auto first = distinct.find(file.sha256);
      if (first == distinct.end()) continue;  // its blob is stored already
      EBlobOutcome outcome{};
      if (!blobs_.Store(file.source, file.sha256, file.size, outcome, error)) return false;
      tally_.Count(outcome);
      if (!file.chunkIndex.empty()) {
        if (!blobs_.StoreBytes(file.chunkIndex, file.chunkIndexSha256, outcome, error)) return false;
        ++chunkIndexes_;
      }
      distinct.erase(first);
    }
    if (!request_.launcher) return true;
    EBlobOutcome outcome{};
    if (!blobs_.Store(request_.launcher->file, request_.launcher->sha256, request_.launcher->size, outcome, error)) {
      return false;
    }
    tally_.Count(outcome);
    return true;
  }

  bool WriteListAndSignatures(std::wstring& error) {
    const std::string list = WriteUpdateList(Draft(true));
    std::string signatures;
    for (const auto& key : keys_) {
      signatures += key->SignatureLine(reinterpret_cast<const std::uint8_t*>(list.data()), list.size()) + "\n";
    }
    if (!AcceptedByEveryKey(list, signatures, error)) return false;
    listBytes_ = list.size();
    return ReplaceFileAtomically(request_.host / platform::ToPath(listName_), list, error) &&
           ReplaceFileAtomically(request_.host / platform::ToPath(patch::SignatureFileName(request_.release)),
                                 signatures, error);
  }

  // The launcher's own acceptance, once per key, before anything points at
  // the list: a list that some launcher would refuse is never published.
  bool AcceptedByEveryKey(const std::string& list, const std::string& signatures, std::wstring& error) const {
    for (const auto& key : keys_) {
      const std::array<PublicKey, 2> keyTable{key->Public(), PublicKey{}};
      patch::SManifest accepted;
      const patch::EManifestVerdict verdict =
          patch::AcceptManifest(reinterpret_cast<const std::uint8_t*>(list.data()), list.size(), signatures,
                                request_.release, request_.channel, 0, keyTable, accepted);
      if (verdict != patch::EManifestVerdict::Valid) {
        error = L"the written update list was refused: " + patch::ManifestVerdictText(verdict);
        return false;
      }
      if (accepted.files.size() != scan_.files.size()) {
        error = L"the written update list lost " + std::to_wstring(scan_.files.size() - accepted.files.size()) +
                L" file entries when read back";
        return false;
      }
    }
    return true;
  }

  bool MovePointer(std::wstring& error) {
    return ReplaceFileAtomically(pointerFile_, std::to_string(request_.release) + "\n", error);
  }

  void PrintSummary() const {
    std::uint64_t bytes = 0;
    for (const SGameFile& file : scan_.files) bytes += file.size;
    PrintLine(L"published release " + std::to_wstring(request_.release) + L" on channel " + request_.channel);
    PrintLine(L"files: " + std::to_wstring(scan_.files.size()) + L" (" + std::to_wstring(bytes) +
              L" bytes), skipped: " + std::to_wstring(scan_.skipped.size()));
    PrintLine(L"distinct contents: " + std::to_wstring(distinctBlobs_) +
              (request_.launcher ? L" and the launcher " + request_.launcher->version : L""));
    PrintLine(L"chunk indexes (files from 4 MiB): " + std::to_wstring(chunkIndexes_));
    PrintLine(L"blobs written: " + std::to_wstring(tally_.written));
    PrintLine(L"blobs reused: " + std::to_wstring(tally_.reused));
    if (tally_.repaired != 0) PrintLine(L"blobs repaired (wrong size on the host): " + std::to_wstring(tally_.repaired));
    PrintLine(L"update list: " + listName_ + L" (" + std::to_wstring(listBytes_) + L" bytes), " +
              std::to_wstring(keys_.size()) + L" signature(s)");
    PrintLine(L"pointer: " + platform::FromPath(pointerFile_.filename()) + L" -> " +
              std::to_wstring(request_.release));
  }

  SPublishRequest request_;
  SigningKeys keys_;
  CBlobStore blobs_;
  std::filesystem::path pointerFile_;
  std::wstring listName_;
  std::wstring generatedAt_;
  SFolderScan scan_;
  SBlobTally tally_;
  std::size_t distinctBlobs_ = 0;
  std::size_t chunkIndexes_ = 0;
  std::size_t listBytes_ = 0;
};

}  // namespace

int RunPublish(const Arguments& arguments) {
  CParsedOptions options;
  if (auto stop = ParseCommandOptions(L"publish", arguments, kPublishOptions, kPublishHelp, options)) return *stop;
  std::wstring error;
  SPublishRequest request;
  if (!ReadRequest(options, request, error)) return UsageError(L"publish", error);
  SigningKeys keys;
  if (!LoadSigningKeys(options.Values(L"key"), keys, error)) return Failure(error);
  CPublishRun run(std::move(request), std::move(keys));
  return run.Run(error) ? kExitSuccess : Failure(error);
}

}  // namespace publisher
