// verify over https, as launchers reach the host, against the test nginx.

#include <gtest/gtest.h>

#include "crypto/hex.h"
#include "platform/random_id.h"
#include "tests/publisher/publisher_test_support.h"
#include "tests/support/test_servers.h"
#include "text/utf.h"

namespace publisher_testing {
namespace {

TEST(VerifyHttps, ChecksAHostAsLaunchersSeeIt) {
  const testing_support::CTestServers& servers = testing_support::CTestServers::Get();
  ASSERT_TRUE(servers.available()) << servers.problem();
  testing_support::TempDir dir;
  dir.Write("game/game.exe", testing_support::PatternBytes(300000));
  dir.Write("game/data/a.pak", "pack a");
  const SToolKey key = MakeKey(dir.path(), "operator.key");

  platform::RandomId id{};
  ASSERT_TRUE(platform::GenerateRandomId(id));
  const std::string folder = "publisher-" + text::WideToUtf8(crypto::ToLowerHex(id.data(), 8));
  const std::filesystem::path host = servers.wwwDir() / folder;
  ASSERT_EQ(Publish(host, dir.path() / "game", L"stable", 1, {key}).exitCode, 0);

  const std::vector<std::wstring> verify = {L"verify", L"--host", servers.HttpsUrl(folder), L"--key-hex", key.hex};
  const SToolRun intact = RunTool(verify);
  EXPECT_EQ(intact.exitCode, 0) << intact.err;
  EXPECT_TRUE(Contains(intact.out, "blobs: 2 needed, 2 intact\n"));

  std::filesystem::remove_all(host / "blobs");
  const SToolRun missing = RunTool(verify);
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_TRUE(Contains(missing.err, ": missing (needed by data/a.pak)"));
  EXPECT_TRUE(Contains(missing.err, ": missing (needed by game.exe)"));
  std::filesystem::remove_all(host);
}

}  // namespace
}  // namespace publisher_testing
