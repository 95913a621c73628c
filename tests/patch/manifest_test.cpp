#include "patch/manifest.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <string>
#include <string_view>

#include "patch/blob_path.h"
#include "tests/crypto/signing_support.h"

namespace {

using patch::EManifestVerdict;
using patch::SManifest;
using signing_support::Base64Of;
using signing_support::SKeyPair;

constexpr const char* kHash = "3fa9c1d2e3f405162738495a6b7c8d9e0f1a2b3c4d5e6f708192a3b4c5d6e7f8";
constexpr const wchar_t* kWideHash = L"3fa9c1d2e3f405162738495a6b7c8d9e0f1a2b3c4d5e6f708192a3b4c5d6e7f8";

std::string Quoted(std::string_view text) { return std::string("\"").append(text).append("\""); }

// A valid list for version 7 of "live" with one file; `changes` replaces
// members by name, and an empty text leaves the member out.
std::string BuildList(const std::map<std::string, std::string>& changes = {}) {
  std::map<std::string, std::string> members = {
      {"schema", "1"},
      {"version", "7"},
      {"channel", "\"live\""},
      {"generatedAt", "\"2024-05-01T10:00:00Z\""},
      {"files", std::string("[{\"path\":\"bin/game.dat\",\"sha256\":\"") + kHash + "\",\"size\":42}]"},
  };
  for (const auto& [key, value] : changes) members[key] = value;
  std::string list = "{";
  for (const auto& [key, value] : members) {
    if (value.empty()) continue;
    if (list.size() > 1) list += ",";
    list += Quoted(key) + ":" + value;
  }
  return list + "}";
}

class ManifestTest : public testing::Test {
 protected:
  EManifestVerdict Accept(const std::string& list, const std::string& signatureText, SManifest& manifest,
                          std::uint64_t advertised = 7, const std::wstring& channel = L"live",
                          std::uint64_t floor = 0) const {
    return patch::AcceptManifest(reinterpret_cast<const std::uint8_t*>(list.data()), list.size(), signatureText,
                                 advertised, channel, floor, keys_, manifest);
  }

  // Signed by the first key, so only the checks after the signature decide.
  EManifestVerdict AcceptSigned(const std::string& list, SManifest& manifest, std::uint64_t advertised = 7,
                                const std::wstring& channel = L"live", std::uint64_t floor = 0) const {
    return Accept(list, Base64Of(first_.Sign(list)), manifest, advertised, channel, floor);
  }

  SKeyPair first_;
  SKeyPair second_;
  SKeyPair stranger_;
  std::array<PublicKey, 2> keys_{first_.publicKey, second_.publicKey};
};

// The signature is checked first, on the exact bytes, and only then the size.
TEST_F(ManifestTest, SignatureThenSizeLimit) {
  std::string atLimit = BuildList();
  atLimit.insert(1, 262144 - atLimit.size(), ' ');
  const std::string overLimit = atLimit + " ";

  SManifest manifest;
  EXPECT_EQ(Accept(atLimit, Base64Of(stranger_.Sign(atLimit)) + "\n" + Base64Of(second_.Sign(atLimit)), manifest),
            EManifestVerdict::Valid);
  EXPECT_EQ(Accept(overLimit, Base64Of(first_.Sign(atLimit)), manifest), EManifestVerdict::Unsigned);
  EXPECT_EQ(AcceptSigned(overLimit, manifest), EManifestVerdict::TooLarge);
  EXPECT_EQ(Accept(overLimit, Base64Of(stranger_.Sign(overLimit)), manifest), EManifestVerdict::Unsigned);
  EXPECT_EQ(patch::ParseManifest(reinterpret_cast<const std::uint8_t*>(overLimit.data()), overLimit.size(), 7,
                                 L"live", 0, manifest),
            EManifestVerdict::TooLarge);
  EXPECT_EQ(manifest, SManifest{});
}

TEST_F(ManifestTest, VerdictsOfTheChecksAfterTheSignature) {
  struct SCase {
    std::string list;
    EManifestVerdict verdict;
    std::uint64_t advertised = 7;
    std::wstring channel = L"live";
    std::uint64_t floor = 0;
  } const cases[] = {
      {"", EManifestVerdict::Unreadable},
      {BuildList({{"channel", "\"caf\xC3\xA9\""}}), EManifestVerdict::Unreadable},
      {"[1]", EManifestVerdict::Unreadable},
      {BuildList({{"schema", ""}}), EManifestVerdict::Unreadable},
      {BuildList({{"schema", "2"}}), EManifestVerdict::NewerSchema},
      {BuildList({{"schema", "0.5"}}), EManifestVerdict::NewerSchema},
      {BuildList({{"version", "\"7\""}}), EManifestVerdict::Unreadable},
      {BuildList({{"version", "0.99"}}), EManifestVerdict::Unreadable, 0},
      {BuildList({{"version", "18446744073709551616"}}), EManifestVerdict::Unreadable},
      {BuildList({{"version", "9223372036854775808"}}), EManifestVerdict::Valid, 9223372036854775808ull},
      {BuildList({{"version", "8"}}), EManifestVerdict::VersionMismatch},
      {BuildList({{"channel", ""}}), EManifestVerdict::Unreadable},
      {BuildList({{"generatedAt", "5"}}), EManifestVerdict::Unreadable},
      {BuildList({{"channel", "\"Beta\""}}), EManifestVerdict::ChannelMismatch, 7, L"beta"},
      {BuildList({{"channel", "\"caf\\u00e9\""}}), EManifestVerdict::Valid, 7, L"caf\u00e9"},
      {BuildList(), EManifestVerdict::Valid, 7, L"live", 7},
      {BuildList(), EManifestVerdict::Rollback, 7, L"live", 8},
      {BuildList({{"files", "{}"}}), EManifestVerdict::Unreadable},
      {BuildList({{"files", "[]"}}), EManifestVerdict::Valid},
      // The first failing step decides.
      {BuildList({{"schema", "2"}, {"version", "0"}}), EManifestVerdict::NewerSchema},
      {BuildList({{"version", "8"}, {"channel", "\"Beta\""}}), EManifestVerdict::VersionMismatch},
      {BuildList({{"channel", "\"Beta\""}}), EManifestVerdict::ChannelMismatch, 7, L"live", 8},
      {BuildList({{"files", ""}}), EManifestVerdict::Rollback, 7, L"live", 8},
  };
  for (const SCase& c : cases) {
    SManifest manifest;
    manifest.version = 99;  // a refused list must wipe this out
    const EManifestVerdict verdict = AcceptSigned(c.list, manifest, c.advertised, c.channel, c.floor);
    EXPECT_EQ(verdict, c.verdict) << c.list;
    EXPECT_EQ(manifest.version, verdict == EManifestVerdict::Valid ? c.advertised : 0) << c.list;
  }
}

TEST_F(ManifestTest, AcceptedListKeepsItsFieldsAndSkipsBadEntriesInOrder) {
  const std::string hash = Quoted(kHash);
  std::string upperDigit = kHash;
  upperDigit[10] = 'A';
  auto entry = [](const std::string& path, const std::string& sha256, const std::string& size) {
    return "{\"path\":" + path + ",\"sha256\":" + sha256 + ",\"size\":" + size + "},";
  };
  const std::string files = std::string("[") + entry("\"b\\\\second.pak\"", hash, "2") + entry("\"../x\"", hash, "5") +
                            entry("\"C:/x\"", hash, "5") + entry("7", hash, "5") +
                            entry("\"x\"", Quoted(upperDigit), "5") +
                            entry("\"x\"", Quoted(std::string_view(kHash).substr(1)), "5") +
                            entry("\"x\"", hash, "-0.5") + entry("\"x\"", hash, "\"5\"") +
                            entry("\"x\"", hash, "18446744073709551616") + "{\"path\":\"x\",\"sha256\":" + hash +
                            "},5," + entry("\"a//first.pak\"", hash, "1.7") + entry("\"a/./b\"", hash, "3") +
                            // A chunk index is optional; a malformed one is dropped, never its entry.
                            "{\"path\":\"c\",\"sha256\":" + hash + ",\"size\":4,\"chunks\":{\"sha256\":" + hash +
                            ",\"size\":90}},{\"path\":\"d\",\"sha256\":" + hash + ",\"size\":5,\"chunks\":{\"size\":9}},";
  SManifest manifest;
  ASSERT_EQ(AcceptSigned(BuildList({{"version", "7.9"},
                                    {"generatedAt", "\"when\""},
                                    {"files", files.substr(0, files.size() - 1) + "]"}}),
                         manifest),
            EManifestVerdict::Valid);
  SManifest expected;
  expected.version = 7;
  expected.channel = L"live";
  expected.generatedAt = L"when";
  expected.files = {{L"b/second.pak", 2, kWideHash}, {L"a/first.pak", 1, kWideHash}, {L"a/b", 3, kWideHash},
                    {L"c", 4, kWideHash}, {L"d", 5, kWideHash}};
  expected.files[3].chunkIndexSha256 = kWideHash;
  expected.files[3].chunkIndexSize = 90;
  EXPECT_EQ(manifest, expected);
}

TEST_F(ManifestTest, LauncherRecordIsAllOrNothing) {
  const std::string hash = Quoted(kHash);
  auto record = [](const std::string& productVersion, const std::string& sha256, const std::string& size) {
    return "{\"productVersion\":" + productVersion + ",\"sha256\":" + sha256 + ",\"size\":" + size + "}";
  };
  const std::string complete = record("\"1.0.6\"", hash, "1234.9");
  const std::pair<std::string, bool> cases[] = {
      {complete, true},
      {record("\"\"", hash, "1"), false},
      {record("\"1.0.6\"", Quoted("3FA9C1D2E3F405162738495A6B7C8D9E0F1A2B3C4D5E6F708192A3B4C5D6E7F8"), "1"), false},
      {record("\"1.0.6\"", hash, "-1"), false},
      {"[" + complete + "]", false},
  };
  for (const auto& [launcher, present] : cases) {
    SManifest manifest;
    ASSERT_EQ(AcceptSigned(BuildList({{"launcher", launcher}}), manifest), EManifestVerdict::Valid) << launcher;
    EXPECT_EQ(manifest.hasLauncher, present) << launcher;
    EXPECT_EQ(manifest.launcherProductVersion, present ? L"1.0.6" : L"") << launcher;
    EXPECT_EQ(manifest.launcherSize, present ? 1234u : 0u) << launcher;
    EXPECT_EQ(manifest.launcherSha256, present ? kWideHash : L"") << launcher;
  }
}

TEST(ManifestVerdictText, EveryVerdictHasItsSentence) {
  const std::pair<int, const wchar_t*> cases[] = {
      {0, L"The update list is valid."},
      {1, L"The update list is not signed by this launcher's keys."},
      {2, L"The update list is too large to be genuine."},
      {3, L"The update list could not be read."},
      {4, L"The update list uses a newer format than this launcher understands."},
      {5, L"The update list does not match the version the host advertised."},
      {6, L"The update list belongs to a different release channel."},
      {7, L"The host offered an older update than one already applied here."},
      {8, L"The update list was refused."},
      {-1, L"The update list was refused."},
  };
  for (const auto& [value, sentence] : cases) {
    EXPECT_EQ(patch::ManifestVerdictText(static_cast<EManifestVerdict>(value)), sentence) << value;
  }
}

TEST(BlobPathForHash, OnlyLowerCaseDigestsHaveAPath) {
  const std::wstring hash = kWideHash;
  EXPECT_EQ(patch::BlobPathForHash(hash), L"blobs/3f/" + hash);
  for (const std::wstring& bad : {L"3FA9" + hash.substr(4), hash.substr(1), hash + L"0", L"g" + hash.substr(1)}) {
    EXPECT_EQ(patch::BlobPathForHash(bad), L"") << testing::PrintToString(bad);
  }
}

}  // namespace
