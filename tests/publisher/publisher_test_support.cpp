#include "tests/publisher/publisher_test_support.h"

#include <gtest/gtest.h>

#include <fstream>

#include "crypto/sha256.h"
#include "patch/blob_path.h"
#include "patch/channel_pointer.h"
#include "platform/module_path.h"
#include "platform/path_text.h"
#include "tests/crypto/signing_support.h"
#include "tests/support/temp_dir.h"
#include "text/utf.h"

namespace publisher_testing {

std::filesystem::path ToolPath() {
  return platform::ToPath(platform::QueryModulePath()).parent_path() / VL_PUBLISHER_TOOL_FROM_TESTS;
}

SToolRun RunTool(const std::vector<std::wstring>& arguments) {
  const testing_support::TempDir capture;
  SToolRun run;
  run.exitCode = RunToolWritingTo(arguments, capture.path() / "out", capture.path() / "err");
  run.out = testing_support::ReadFileBytes(capture.path() / "out");
  run.err = testing_support::ReadFileBytes(capture.path() / "err");
  return run;
}

std::wstring Text(const std::filesystem::path& path) { return platform::FromPath(path); }

testing::AssertionResult Contains(const std::string& text, std::string_view part) {
  if (text.find(part) != std::string::npos) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "\"" << part << "\" is not in:\n" << text;
}

SToolKey MakeKey(const std::filesystem::path& folder, std::string_view name) {
  SToolKey key;
  key.secretFile = folder / std::string(name);
  const SToolRun run = RunTool({L"keygen", L"--secret", Text(key.secretFile)});
  EXPECT_EQ(run.exitCode, 0) << run.err;
  const std::string marker = "public key (hex):";
  const std::size_t at = run.out.find(marker);
  if (at == std::string::npos) {
    ADD_FAILURE() << "keygen printed no hex key: " << run.out;
    return key;
  }
  const std::size_t start = run.out.find_first_not_of(' ', at + marker.size());
  const std::string hex = run.out.substr(start, 64);
  key.hex = text::Utf8ToWide(hex);
  const std::vector<std::uint8_t> bytes = signing_support::HexBytes(hex);
  std::copy(bytes.begin(), bytes.end(), key.publicKey.begin());
  return key;
}

SToolRun Publish(const std::filesystem::path& host, const std::filesystem::path& game, std::wstring_view channel,
                 std::uint64_t release, const std::vector<SToolKey>& keys, const std::vector<std::wstring>& extra) {
  std::vector<std::wstring> arguments = {L"publish",         L"--host",    Text(host),
                                         L"--game",          Text(game),   L"--channel",
                                         std::wstring(channel), L"--release", std::to_wstring(release)};
  for (const SToolKey& key : keys) {
    arguments.push_back(L"--key");
    arguments.push_back(Text(key.secretFile));
  }
  arguments.insert(arguments.end(), extra.begin(), extra.end());
  return RunTool(arguments);
}

std::uint64_t PointerRelease(const std::filesystem::path& host, std::wstring_view channel) {
  const std::filesystem::path pointer = host / platform::ToPath(patch::ChannelPointerFileName(channel));
  std::uint64_t release = 0;
  if (std::filesystem::exists(pointer)) {
    EXPECT_TRUE(patch::ParseChannelPointer(testing_support::ReadFileBytes(pointer), release));
  }
  return release;
}

patch::EManifestVerdict AcceptPublished(const std::filesystem::path& host, std::uint64_t release,
                                        std::wstring_view channel, const PublicKey& key, patch::SManifest& list) {
  const std::string bytes = testing_support::ReadFileBytes(host / platform::ToPath(patch::ManifestFileName(release)));
  const std::string signatures =
      testing_support::ReadFileBytes(host / platform::ToPath(patch::SignatureFileName(release)));
  return patch::AcceptManifest(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(), signatures, release,
                               std::wstring(channel), 0, {key, PublicKey{}}, list);
}

std::filesystem::path CPublisherTest::HostFile(const std::wstring& name) const {
  return Host() / platform::ToPath(name);
}

std::filesystem::path CPublisherTest::BlobFile(std::string_view content) const {
  std::wstring digest;
  std::wstring error;
  EXPECT_TRUE(crypto::HashMemorySha256(reinterpret_cast<const std::uint8_t*>(content.data()), content.size(), digest,
                                       error));
  return HostFile(patch::BlobPathForHash(digest));
}

void OverwriteFile(const std::filesystem::path& file, std::string_view bytes) {
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::size_t CountBlobs(const std::filesystem::path& host) {
  std::size_t count = 0;
  if (!std::filesystem::exists(host / "blobs")) return 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(host / "blobs")) {
    count += entry.is_regular_file() ? 1 : 0;
  }
  return count;
}

}  // namespace publisher_testing
