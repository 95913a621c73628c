#pragma once
// The signed update list: what a release consists of, and the one gate every
// list passes before anything downstream may use it.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/launcher_config.h"

namespace patch {

// One game file of the list.
struct SManifestEntry {
  SManifestEntry() = default;
  SManifestEntry(std::wstring path, std::uint64_t size, std::wstring sha256)
      : path(std::move(path)), size(size), sha256(std::move(sha256)) {}

  std::wstring path;  // relative to the game folder, normalised, "/" separators
  std::uint64_t size = 0;
  std::wstring sha256;  // 64 lower-case hexadecimal characters
  // The blob of the file's chunk index (large files only), or empty; a
  // launcher that knows nothing of chunks never reads these.
  std::wstring chunkIndexSha256;
  std::uint64_t chunkIndexSize = 0;

  bool operator==(const SManifestEntry&) const = default;
};

// An accepted update list. Default-constructed it is the reset state that a
// refused list leaves behind.
struct SManifest {
  std::uint64_t version = 0;
  std::wstring channel;
  std::wstring generatedAt;  // kept as text, never interpreted
  bool hasLauncher = false;  // the three launcher fields are set only when true
  std::wstring launcherProductVersion;
  std::uint64_t launcherSize = 0;
  std::wstring launcherSha256;
  std::vector<SManifestEntry> files;  // list order; malformed entries left out

  bool operator==(const SManifest&) const = default;
};

// Values are stable: they appear in logs.
enum class EManifestVerdict : int {
  Valid = 0,
  Unsigned = 1,
  TooLarge = 2,
  Unreadable = 3,
  NewerSchema = 4,
  VersionMismatch = 5,
  ChannelMismatch = 6,
  Rollback = 7,
};

// A genuine list is far smaller; anything bigger is refused before parsing.
inline constexpr std::size_t kMaxManifestBytes = 262144;

// The whole acceptance: signature over the exact bytes with `keys` (tried in
// order, all-zero slots skipped), then ParseManifest. `manifest` is reset
// first and filled only when the verdict is Valid.
EManifestVerdict AcceptManifest(const std::uint8_t* listBytes, std::size_t listLength,
                                std::string_view signatureText, std::uint64_t advertisedVersion,
                                const std::wstring& expectedChannel, std::uint64_t floorVersion,
                                const std::array<PublicKey, 2>& keys, SManifest& manifest);

// The checks after the signature: size, ASCII text, JSON shape, schema,
// version, channel, rollback floor, then the launcher record and the files.
// Never returns Unsigned. A "version" of 2^64 or more is Unreadable; a launcher
// or file "size" of 2^64 or more drops that record like any other bad size.
EManifestVerdict ParseManifest(const std::uint8_t* listBytes, std::size_t listLength,
                               std::uint64_t advertisedVersion, const std::wstring& expectedChannel,
                               std::uint64_t floorVersion, SManifest& manifest);

// The user-facing reason for a verdict; values outside the enumeration get
// the generic refusal sentence.
std::wstring ManifestVerdictText(EManifestVerdict verdict);

}  // namespace patch
