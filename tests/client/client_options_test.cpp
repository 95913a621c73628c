#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "patch/version_order.h"
#include "platform/path_text.h"
#include "tools/client/client_options.h"

namespace client {
namespace {

// RFC 8032's first test key: a valid point of large order.
const std::wstring kKeyA = L"d75a980182b10ab7d54bfed3c964073a0ee172f3daa62325af021a68f707511a";
// Its upper-case spelling is accepted too (operators paste keys from many tools).
const std::wstring kKeyB = L"3D4017C3E843895A92B70AA74D1B7EBC9C982CCF2EC4968CC0CD55F12AF4660C";
// The identity point: small order, it would verify forgeries.
const std::wstring kSmallOrderKey = L"0100000000000000000000000000000000000000000000000000000000000000";

std::vector<std::wstring> Base(std::wstring command) {
  return {std::move(command), L"--host", L"https://patch.example.test/", L"--key-hex", kKeyA, L"--game", L"game"};
}

std::vector<std::wstring> With(std::vector<std::wstring> arguments, std::initializer_list<std::wstring> more) {
  arguments.insert(arguments.end(), more);
  return arguments;
}

TEST(ClientOptions, AcceptsEveryCommandWithTheRequiredSettingsAndBuildsTheEngineSettingsFromThem) {
  const std::pair<std::wstring, EClientCommand> commands[] = {
      {L"sync", EClientCommand::Sync},       {L"patch", EClientCommand::Patch},
      {L"repair", EClientCommand::Repair},   {L"orphans", EClientCommand::Orphans},
      {L"remove-orphans", EClientCommand::RemoveOrphans},
  };
  SClientOptions options;
  std::wstring error;
  for (const auto& [name, command] : commands) {
    options = {};
    ASSERT_EQ(ParseClientArguments(Base(name), options, error), EParseOutcome::Run) << error;
    EXPECT_EQ(options.command, command);
  }
  EXPECT_EQ(options.host, L"https://patch.example.test/");
  EXPECT_TRUE(options.runtimeFolder.empty() && options.channel.empty() && !options.json);
  ASSERT_EQ(options.keys.size(), 1u);
  EXPECT_EQ(options.keys[0][0], 0xd7);
  EXPECT_EQ(options.keys[0][31], 0x1a);

  const LauncherConfig config = ClientLauncherConfig(options);
  EXPECT_EQ(config.patchHost, L"https://patch.example.test/");
  EXPECT_EQ(config.publicKeys[0], options.keys[0]);
  EXPECT_EQ(config.publicKeys[1], PublicKey{});
  EXPECT_FALSE(config.startGameAfterPatch);
  EXPECT_EQ(config.gameExecutable, CompiledLauncherConfig().gameExecutable);
  // A published launcher must never replace the client: nothing is newer than its version.
  EXPECT_TRUE(patch::IsNewerVersion(config.launcherVersion, L"1.0.5"));
  EXPECT_FALSE(patch::IsNewerVersion(L"999999999.999999999.999999999.999999999", config.launcherVersion));
  // The runtime folder defaults to one inside the game folder; both are made absolute.
  const std::filesystem::path game = std::filesystem::current_path() / "game";
  EXPECT_EQ(ClientServiceFolders(options).gameFolder, platform::FromPath(game));
  EXPECT_EQ(ClientServiceFolders(options).runtimeFolder, platform::FromPath(game / ".runtime"));
  SClientOptions explicitRuntime;
  ASSERT_EQ(ParseClientArguments(With(Base(L"sync"), {L"--runtime", L"state/"}), explicitRuntime, error),
            EParseOutcome::Run);
  EXPECT_EQ(ClientServiceFolders(explicitRuntime).runtimeFolder,
            platform::FromPath(std::filesystem::current_path() / "state"));
}

TEST(ClientOptions, TakesOptionsInEitherSpellingAndAnyPosition) {
  SClientOptions options;
  std::wstring error;
  const std::vector<std::wstring> arguments = {L"--json",         L"--channel=beta", L"--key-hex=" + kKeyA,
                                               L"--runtime",      L"rt",             L"patch",
                                               L"--key-hex",      kKeyB,             L"--host=https://h/",
                                               L"--game=my game"};
  ASSERT_EQ(ParseClientArguments(arguments, options, error), EParseOutcome::Run) << error;
  EXPECT_EQ(options.command, EClientCommand::Patch);
  EXPECT_TRUE(options.json);
  EXPECT_EQ(options.channel, L"beta");
  EXPECT_EQ(options.runtimeFolder, L"rt");
  EXPECT_EQ(options.gameFolder, L"my game");
  ASSERT_EQ(options.keys.size(), 2u);
  EXPECT_EQ(options.keys[0][0], 0xd7);
  EXPECT_EQ(options.keys[1][0], 0x3d);
}

TEST(ClientOptions, HelpWinsOverEverythingElse) {
  for (const std::vector<std::wstring>& arguments :
       {std::vector<std::wstring>{L"--help"}, {L"-h"}, {L"frobnicate", L"--host", L"http://x", L"--help"}}) {
    SClientOptions options;
    std::wstring error;
    EXPECT_EQ(ParseClientArguments(arguments, options, error), EParseOutcome::Help);
  }
}

TEST(ClientOptions, RefusesEachFaultWithItsOwnSentence) {
  const struct {
    std::vector<std::wstring> arguments;
    std::wstring error;
  } cases[] = {
      {{L"--host", L"https://h/", L"--key-hex", kKeyA, L"--game", L"g"}, L"No command given."},
      {{L"sync", L"--key-hex", kKeyA, L"--game", L"g"}, L"--host is required."},
      {{L"sync", L"--host", L"https://h/", L"--game", L"g"}, L"--key-hex is required."},
      {{L"sync", L"--host", L"https://h/", L"--key-hex", kKeyA}, L"--game is required."},
      {With(Base(L"sync"), {L"patch"}), L"Give one command only."},
      {With(Base(L"sync"), {L"install"}), L"Unknown command install."},
      {With(Base(L"sync"), {L"--verbose"}), L"Unknown option --verbose."},
      {With(Base(L"sync"), {L"--runtime"}), L"--runtime needs a value."},
      {With(Base(L"sync"), {L"--runtime="}), L"--runtime needs a non-empty value."},
      {With(Base(L"sync"), {L"--game", L"other"}), L"--game was given twice."},
      {{L"sync", L"--host", L"http://h/", L"--key-hex", kKeyA, L"--game", L"g"}, L"--host must be an https:// URL."},
      {{L"sync", L"--host", L"HTTPS://h/", L"--key-hex", kKeyA, L"--game", L"g"}, L"--host must be an https:// URL."},
      {With(Base(L"sync"), {L"--channel", L"Beta"}), L"--channel must be stable or beta."},
      {With(Base(L"sync"), {L"--key-hex", kKeyB, L"--key-hex", kKeyB}), L"--key-hex may be given at most twice."},
      {With(Base(L"sync"), {L"--key-hex", kKeyB.substr(1)}), L"--key-hex must be 64 hexadecimal digits."},
      {With(Base(L"sync"), {L"--key-hex", kKeyB.substr(1) + L"g"}), L"--key-hex must be 64 hexadecimal digits."},
      {With(Base(L"sync"), {L"--key-hex", std::wstring(64, L'0')}), L"--key-hex is not a usable Ed25519 public key."},
      {With(Base(L"sync"), {L"--key-hex", kSmallOrderKey}), L"--key-hex is not a usable Ed25519 public key."},
  };
  for (const auto& c : cases) {
    SClientOptions options;
    std::wstring error;
    EXPECT_EQ(ParseClientArguments(c.arguments, options, error), EParseOutcome::UsageError) << c.error;
    EXPECT_EQ(error, c.error);
  }
}

}  // namespace
}  // namespace client
