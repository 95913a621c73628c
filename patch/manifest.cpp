#include "patch/manifest.h"

#include <utility>

#include "crypto/manifest_signature.h"
#include "patch/blob_path.h"
#include "patch/relative_path.h"
#include "text/json.h"

namespace patch {
namespace {

using text::CJsonValue;

constexpr std::uint8_t kMaxAsciiByte = 127;
constexpr double kSchema = 1.0;
// 2^64: the first double an unsigned 64-bit integer cannot hold.
constexpr double kUint64Limit = 18446744073709551616.0;

// Truncates toward zero. NaN, values below `minimum` and values of 2^64 or
// more are refused here, so the cast below is always defined.
bool TruncateToUint64(double number, double minimum, std::uint64_t& out) {
  if (!(number >= minimum) || !(number < kUint64Limit)) return false;
  out = static_cast<std::uint64_t>(number);
  return true;
}

bool ReadString(const CJsonValue& object, std::wstring_view key, std::wstring& out) {
  const CJsonValue* value = object.Find(key);
  if (value == nullptr || !value->IsString()) return false;
  out = value->AsString();
  return true;
}

bool ReadByteCount(const CJsonValue& object, std::wstring_view key, std::uint64_t& out) {
  const CJsonValue* value = object.Find(key);
  return value != nullptr && value->IsNumber() && TruncateToUint64(value->AsNumber(), 0.0, out);
}

bool ReadDigest(const CJsonValue& object, std::wstring_view key, std::wstring& out) {
  return ReadString(object, key, out) && IsSha256Hex(out);
}

// All three members or nothing: a partial record never reaches the manifest.
void ReadLauncher(const CJsonValue& record, SManifest& manifest) {
  std::wstring productVersion;
  std::uint64_t size = 0;
  std::wstring sha256;
  if (!ReadString(record, L"productVersion", productVersion) || productVersion.empty()) return;
  if (!ReadDigest(record, L"sha256", sha256) || !ReadByteCount(record, L"size", size)) return;
  manifest.hasLauncher = true;
  manifest.launcherProductVersion = std::move(productVersion);
  manifest.launcherSize = size;
  manifest.launcherSha256 = std::move(sha256);
}

// Optional, and a malformed one is simply absent: the file is then fetched whole.
void ReadChunkIndexRecord(const CJsonValue& element, SManifestEntry& entry) {
  const CJsonValue* record = element.Find(L"chunks");
  std::wstring sha256;
  std::uint64_t size = 0;
  if (record == nullptr || !ReadDigest(*record, L"sha256", sha256) || !ReadByteCount(*record, L"size", size)) return;
  entry.chunkIndexSha256 = std::move(sha256);
  entry.chunkIndexSize = size;
}

bool ReadEntry(const CJsonValue& element, SManifestEntry& entry) {
  std::wstring path;
  if (!ReadString(element, L"path", path) || !ValidateRelativePath(path, entry.path) ||
      !ReadDigest(element, L"sha256", entry.sha256) || !ReadByteCount(element, L"size", entry.size)) {
    return false;
  }
  ReadChunkIndexRecord(element, entry);
  return true;
}

// The list is pure ASCII, so each byte is one code unit; false on any other byte.
bool WidenAscii(const std::uint8_t* bytes, std::size_t length, std::wstring& out) {
  out.clear();
  out.reserve(length);
  for (std::size_t i = 0; i < length; ++i) {
    if (bytes[i] > kMaxAsciiByte) return false;
    out.push_back(static_cast<wchar_t>(bytes[i]));
  }
  return true;
}

}  // namespace

EManifestVerdict ParseManifest(const std::uint8_t* listBytes, std::size_t listLength,
                               std::uint64_t advertisedVersion, const std::wstring& expectedChannel,
                               std::uint64_t floorVersion, SManifest& manifest) {
  manifest = SManifest{};
  if (listLength > kMaxManifestBytes) return EManifestVerdict::TooLarge;
  std::wstring listText;
  if (listBytes == nullptr || listLength == 0 || !WidenAscii(listBytes, listLength, listText)) {
    return EManifestVerdict::Unreadable;
  }
  CJsonValue root;
  if (!text::ParseJson(listText, root) || !root.IsObject()) return EManifestVerdict::Unreadable;

  const CJsonValue* schema = root.Find(L"schema");
  if (schema == nullptr || !schema->IsNumber()) return EManifestVerdict::Unreadable;
  // Also catches older or fractional numbers; the message still says "newer".
  if (!(schema->AsNumber() == kSchema)) return EManifestVerdict::NewerSchema;

  SManifest accepted;
  const CJsonValue* version = root.Find(L"version");
  if (version == nullptr || !version->IsNumber() || !TruncateToUint64(version->AsNumber(), 1.0, accepted.version)) {
    return EManifestVerdict::Unreadable;
  }
  if (!ReadString(root, L"channel", accepted.channel) || !ReadString(root, L"generatedAt", accepted.generatedAt)) {
    return EManifestVerdict::Unreadable;
  }
  if (accepted.version != advertisedVersion) return EManifestVerdict::VersionMismatch;
  if (accepted.channel != expectedChannel) return EManifestVerdict::ChannelMismatch;
  // Equal is the normal case: re-checking the release already installed.
  if (accepted.version < floorVersion) return EManifestVerdict::Rollback;

  if (const CJsonValue* launcher = root.Find(L"launcher")) ReadLauncher(*launcher, accepted);

  const CJsonValue* files = root.Find(L"files");
  if (files == nullptr || !files->IsArray()) return EManifestVerdict::Unreadable;
  for (const CJsonValue& element : files->AsArray()) {
    SManifestEntry entry;
    if (ReadEntry(element, entry)) accepted.files.push_back(std::move(entry));
  }
  manifest = std::move(accepted);
  return EManifestVerdict::Valid;
}

EManifestVerdict AcceptManifest(const std::uint8_t* listBytes, std::size_t listLength,
                                std::string_view signatureText, std::uint64_t advertisedVersion,
                                const std::wstring& expectedChannel, std::uint64_t floorVersion,
                                const std::array<PublicKey, 2>& keys, SManifest& manifest) {
  manifest = SManifest{};
  // Before the size test, so an unsigned oversized list reports Unsigned.
  if (!crypto::VerifyManifestSignature(listBytes, listLength, signatureText, &keys)) {
    return EManifestVerdict::Unsigned;
  }
  return ParseManifest(listBytes, listLength, advertisedVersion, expectedChannel, floorVersion, manifest);
}

std::wstring ManifestVerdictText(EManifestVerdict verdict) {
  switch (verdict) {
    case EManifestVerdict::Valid:
      return L"The update list is valid.";
    case EManifestVerdict::Unsigned:
      return L"The update list is not signed by this launcher's keys.";
    case EManifestVerdict::TooLarge:
      return L"The update list is too large to be genuine.";
    case EManifestVerdict::Unreadable:
      return L"The update list could not be read.";
    case EManifestVerdict::NewerSchema:
      return L"The update list uses a newer format than this launcher understands.";
    case EManifestVerdict::VersionMismatch:
      return L"The update list does not match the version the host advertised.";
    case EManifestVerdict::ChannelMismatch:
      return L"The update list belongs to a different release channel.";
    case EManifestVerdict::Rollback:
      return L"The host offered an older update than one already applied here.";
  }
  return L"The update list was refused.";
}

}  // namespace patch
