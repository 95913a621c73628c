#pragma once
// Shared steps of the publisher tests: running the tool, keys made by the tool
// itself, a publish call, and reading back what landed on the host folder the
// way a launcher would accept it.

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "app/launcher_config.h"
#include "patch/manifest.h"
#include "tests/support/temp_dir.h"

namespace publisher_testing {

struct SToolRun {
  int exitCode = -1;
  std::string out;  // standard output, UTF-8
  std::string err;  // standard error, UTF-8
};

// The built vardeni-publish, found relative to the test program (the build
// sets VL_PUBLISHER_TOOL_FROM_TESTS).
std::filesystem::path ToolPath();

// Runs the tool with these arguments, as an operator would, and waits for it.
SToolRun RunTool(const std::vector<std::wstring>& arguments);

// RunTool's system part (tool_runner_posix.cpp, tool_runner_win.cpp): the tool's
// exit status, -1 when it could not be started or did not exit.
int RunToolWritingTo(const std::vector<std::wstring>& arguments, const std::filesystem::path& outFile,
                     const std::filesystem::path& errFile);

std::wstring Text(const std::filesystem::path& path);

// Whether `text` holds `part`, with both shown on failure (gmock's HasSubstr
// is not built for Windows).
testing::AssertionResult Contains(const std::string& text, std::string_view part);

struct SToolKey {
  std::filesystem::path secretFile;
  std::wstring hex;  // as keygen printed it
  PublicKey publicKey{};
};

// Runs keygen for `folder`/`name` and reads the printed public key back.
SToolKey MakeKey(const std::filesystem::path& folder, std::string_view name);

// publish --host --game --channel --release and one --key per key, then `extra`.
SToolRun Publish(const std::filesystem::path& host, const std::filesystem::path& game, std::wstring_view channel,
                 std::uint64_t release, const std::vector<SToolKey>& keys,
                 const std::vector<std::wstring>& extra = {});

// The release the channel's pointer names, 0 when there is none.
std::uint64_t PointerRelease(const std::filesystem::path& host, std::wstring_view channel);

// The launcher's acceptance of the published list of `release` (floor 0).
patch::EManifestVerdict AcceptPublished(const std::filesystem::path& host, std::uint64_t release,
                                        std::wstring_view channel, const PublicKey& key, patch::SManifest& list);

void OverwriteFile(const std::filesystem::path& file, std::string_view bytes);

// Regular files below host/blobs.
std::size_t CountBlobs(const std::filesystem::path& host);

// A temporary folder with a game folder, a host folder and one operator key.
class CPublisherTest : public testing::Test {
 protected:
  void SetUp() override { key_ = MakeKey(dir_.path(), "operator.key"); }

  std::filesystem::path Game() const { return dir_.path() / "game"; }
  std::filesystem::path Host() const { return dir_.path() / "host"; }
  std::filesystem::path HostFile(const std::wstring& name) const;
  // Where the blob of a file holding `content` belongs on the host.
  std::filesystem::path BlobFile(std::string_view content) const;
  std::filesystem::path WriteGame(std::string_view relative, std::string_view bytes) const {
    return dir_.Write("game/" + std::string(relative), bytes);
  }
  SToolRun PublishRelease(std::uint64_t release, const std::vector<std::wstring>& extra = {},
                          std::wstring_view channel = L"stable") const {
    return Publish(Host(), Game(), channel, release, {key_}, extra);
  }

  testing_support::TempDir dir_;
  SToolKey key_;
};

}  // namespace publisher_testing
