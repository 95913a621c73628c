// keygen, sign and verify, run as the built program on temporary folders and,
// for verify over https, against the test nginx.

#include <gtest/gtest.h>

#include "crypto/hex.h"
#include "patch/blob_path.h"
#include "platform/path_text.h"
#include "platform/random_id.h"
#include "tests/publisher/publisher_test_support.h"
#include "tests/support/sha256_of.h"
#include "tests/support/temp_dir.h"
#include "tests/support/test_servers.h"
#include "text/utf.h"

namespace publisher_testing {
namespace {

using testing_support::ReadFileBytes;

class SignAndVerify : public CPublisherTest {
 protected:
  void PublishSample() {
    WriteGame("game.exe", "executable");
    WriteGame("data/a.pak", "pack a");
    WriteGame("data/b.pak", "pack b");
    ASSERT_EQ(PublishRelease(1).exitCode, 0);
  }
  SToolRun Verify(std::vector<std::wstring> extra = {}) const {
    std::vector<std::wstring> arguments = {L"verify", L"--host", Text(Host()), L"--key-hex", key_.hex};
    arguments.insert(arguments.end(), extra.begin(), extra.end());
    return RunTool(arguments);
  }
};

TEST_F(SignAndVerify, KeygenKeepsTheSecretPrivateAndNeverOverwritesIt) {
  const std::string secret = ReadFileBytes(key_.secretFile);
  const SToolRun again = RunTool({L"keygen", L"--secret", Text(key_.secretFile)});
  EXPECT_EQ(again.exitCode, 1);
  EXPECT_TRUE(Contains(again.err, "already exists; use --force to replace it"));
  EXPECT_EQ(ReadFileBytes(key_.secretFile), secret);

  const SToolRun shown = RunTool({L"public-key", L"--key", Text(key_.secretFile)});
  EXPECT_EQ(shown.exitCode, 0);
  EXPECT_TRUE(Contains(shown.out, "public key (hex):    " + text::WideToUtf8(key_.hex)));
  EXPECT_EQ(shown.out.find(secret.substr(0, 20)), std::string::npos);

  const SToolRun forced = RunTool({L"keygen", L"--secret", Text(key_.secretFile), L"--force"});
  EXPECT_EQ(forced.exitCode, 0);
  EXPECT_NE(ReadFileBytes(key_.secretFile), secret);
}

TEST_F(SignAndVerify, DamagedKeyFilesAreRefused) {
  WriteGame("a.txt", "a");
  std::string secret = ReadFileBytes(key_.secretFile);
  secret[70] = secret[70] == 'A' ? 'B' : 'A';  // inside the public half
  const auto damaged = dir_.Write("damaged.key", secret);
  const auto garbage = dir_.Write("garbage.key", "not a key\n");
  for (const auto& file : {damaged, garbage}) {
    SToolKey key;
    key.secretFile = file;
    const SToolRun run = Publish(Host(), Game(), L"stable", 1, {key});
    EXPECT_EQ(run.exitCode, 1) << Text(file);
    EXPECT_TRUE(Contains(run.err, text::WideToUtf8(Text(file))));
  }
  EXPECT_FALSE(std::filesystem::exists(Host() / "pointer.txt"));
}

TEST_F(SignAndVerify, SignAddsALineForAnotherKeyOnceAndNeverANinth) {
  PublishSample();
  const SToolKey second = MakeKey(dir_.path(), "second.key");
  const std::vector<std::wstring> sign = {L"sign", L"--list", Text(HostFile(L"patchlist.v1.json")), L"--key",
                                          Text(second.secretFile)};
  const SToolRun run = RunTool(sign);
  ASSERT_EQ(run.exitCode, 0) << run.err;
  patch::SManifest list;
  EXPECT_EQ(AcceptPublished(Host(), 1, L"stable", second.publicKey, list), patch::EManifestVerdict::Valid);
  EXPECT_EQ(AcceptPublished(Host(), 1, L"stable", key_.publicKey, list), patch::EManifestVerdict::Valid);

  const std::string signatures = ReadFileBytes(HostFile(L"patchlist.v1.sig"));
  const SToolRun twice = RunTool(sign);
  EXPECT_EQ(twice.exitCode, 1);
  EXPECT_TRUE(Contains(twice.err, "already holds a signature by this key"));
  EXPECT_EQ(ReadFileBytes(HostFile(L"patchlist.v1.sig")), signatures);

  const SToolRun verify = RunTool({L"verify", L"--host", Text(Host()), L"--key-hex", second.hex});
  EXPECT_EQ(verify.exitCode, 0) << verify.err;
  EXPECT_TRUE(Contains(verify.out, "signed by key 1\n"));

  // Eight lines are all a launcher reads: a ninth is never added.
  const std::string line = signatures.substr(0, signatures.find('\n') + 1);
  std::string eight;
  for (int i = 0; i < 8; ++i) eight += line;
  OverwriteFile(HostFile(L"patchlist.v1.sig"), eight);
  const SToolRun ninth = RunTool(sign);
  EXPECT_EQ(ninth.exitCode, 1);
  EXPECT_TRUE(Contains(ninth.err, "already holds 8 signatures"));
  EXPECT_EQ(ReadFileBytes(HostFile(L"patchlist.v1.sig")), eight);

  const std::vector<SToolKey> nine(9, key_);
  const SToolRun tooMany = Publish(Host(), Game(), L"stable", 2, nine);
  EXPECT_EQ(tooMany.exitCode, 2);
  EXPECT_TRUE(Contains(tooMany.err, "at most 8 keys"));
}

TEST_F(SignAndVerify, VerifyRefusesWhatALauncherWouldRefuse) {
  PublishSample();
  const SToolKey stranger = MakeKey(dir_.path(), "stranger.key");
  const SToolRun wrongKey = RunTool({L"verify", L"--host", Text(Host()), L"--key-hex", stranger.hex});
  EXPECT_EQ(wrongKey.exitCode, 1);
  EXPECT_TRUE(Contains(wrongKey.err, "The update list is not signed by this launcher's keys."));

  const SToolRun beta = Verify({L"--channel", L"beta"});
  EXPECT_EQ(beta.exitCode, 1);
  EXPECT_TRUE(Contains(beta.err, "pointer-beta.txt"));

  OverwriteFile(HostFile(L"pointer.txt"), "2\n");
  const SToolRun ahead = Verify();
  EXPECT_EQ(ahead.exitCode, 1);
  EXPECT_TRUE(Contains(ahead.err, "patchlist.v2.json"));
}

// Large files get a chunk index (the same bytes always the same index), and
// verify reads each one against its file: a signed index that names wrong
// chunk bytes is a problem even though every blob is intact.
TEST_F(SignAndVerify, LargeFilesGetAChunkIndexThatVerifyChecksChunkByChunk) {
  WriteGame("big.pak", testing_support::PatternBytes(5 * 1024 * 1024, 3));
  WriteGame("small.txt", "small");
  ASSERT_EQ(PublishRelease(1).exitCode, 0);
  const SToolRun again = PublishRelease(2);
  ASSERT_EQ(again.exitCode, 0) << again.err;
  EXPECT_TRUE(Contains(again.out, "chunk indexes (files from 4 MiB): 1\n"));
  patch::SManifest first;
  patch::SManifest second;
  ASSERT_EQ(AcceptPublished(Host(), 1, L"stable", key_.publicKey, first), patch::EManifestVerdict::Valid);
  ASSERT_EQ(AcceptPublished(Host(), 2, L"stable", key_.publicKey, second), patch::EManifestVerdict::Valid);
  const patch::SManifestEntry& big = second.files[0].path == L"big.pak" ? second.files[0] : second.files[1];
  const std::wstring indexName = patch::BlobPathForHash(big.chunkIndexSha256);
  ASSERT_FALSE(indexName.empty());
  EXPECT_EQ(std::filesystem::file_size(HostFile(indexName)), big.chunkIndexSize);
  EXPECT_EQ(first.files, second.files);
  EXPECT_EQ(second.files[0].chunkIndexSha256.empty() + second.files[1].chunkIndexSha256.empty(), 1);
  const SToolRun sound = Verify();
  EXPECT_EQ(sound.exitCode, 0) << sound.err;
  EXPECT_TRUE(Contains(sound.out, "chunk indexes: 1 checked, 1 sound\n"));

  // A wrong index of the right form, published and signed as if the tool had written it.
  std::string wrong = ReadFileBytes(HostFile(indexName));
  const std::size_t digit = wrong.rfind(' ') + 1;
  wrong[digit] = wrong[digit] == '0' ? '1' : '0';
  const std::wstring wrongDigest = testing_support::Sha256Of(wrong);
  dir_.Write(std::filesystem::relative(HostFile(patch::BlobPathForHash(wrongDigest)), dir_.path()).string(), wrong);
  std::string list = ReadFileBytes(HostFile(L"patchlist.v2.json"));
  list.replace(list.find(text::WideToUtf8(big.chunkIndexSha256)), 64, text::WideToUtf8(wrongDigest));
  OverwriteFile(HostFile(L"patchlist.v2.json"), list);
  std::filesystem::remove(HostFile(L"patchlist.v2.sig"));
  ASSERT_EQ(RunTool({L"sign", L"--list", Text(HostFile(L"patchlist.v2.json")), L"--key", Text(key_.secretFile)})
                .exitCode, 0);
  const SToolRun caught = Verify();
  EXPECT_EQ(caught.exitCode, 1);
  EXPECT_TRUE(Contains(caught.err, " chunks do not match the bytes of "));
  EXPECT_TRUE(Contains(caught.out, "chunk indexes: 1 checked, 0 sound\n"));
}

// The same report from a host folder and from its https address, as launchers see it.
TEST_F(SignAndVerify, VerifyReportsEveryMissingOrDamagedBlobOnAFolderAndOverHttps) {
  const testing_support::CTestServers& servers = testing_support::CTestServers::Get();
  ASSERT_TRUE(servers.available()) << servers.problem();
  platform::RandomId id{};
  ASSERT_TRUE(platform::GenerateRandomId(id));
  const std::string folder = "publisher-" + text::WideToUtf8(crypto::ToLowerHex(id.data(), 8));
  const std::filesystem::path served = servers.wwwDir() / folder;
  WriteGame("game.exe", testing_support::PatternBytes(300000));
  WriteGame("data/a.pak", "pack a");
  WriteGame("data/b.pak", "pack b");

  for (const auto& [host, address] : {std::pair(Host(), Text(Host())), std::pair(served, servers.HttpsUrl(folder))}) {
    SCOPED_TRACE(text::WideToUtf8(address));
    ASSERT_EQ(Publish(host, Game(), L"stable", 1, {key_}).exitCode, 0);
    const std::vector<std::wstring> verify = {L"verify", L"--host", address, L"--key-hex", key_.hex};
    const SToolRun intact = RunTool(verify);
    EXPECT_EQ(intact.exitCode, 0) << intact.err;
    EXPECT_TRUE(Contains(intact.out, "blobs: 3 needed, 3 intact\n"));

    const std::wstring lost = testing_support::Sha256Of("pack a");
    std::filesystem::remove(host / platform::ToPath(patch::BlobPathForHash(lost)));
    // The same size as "pack b", so only its digest tells.
    OverwriteFile(host / platform::ToPath(patch::BlobPathForHash(testing_support::Sha256Of("pack b"))), "pack c");
    const SToolRun run = RunTool(verify);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(Contains(run.err, text::WideToUtf8(lost) + ": missing (needed by data/a.pak)"));
    EXPECT_TRUE(Contains(run.err, ": its content has SHA-256 " + text::WideToUtf8(testing_support::Sha256Of("pack c")) +
                                      " (needed by data/b.pak)"));
    EXPECT_TRUE(Contains(run.out, "blobs: 3 needed, 1 intact\n"));
    EXPECT_TRUE(Contains(run.out, "2 problem(s) found\n"));
  }
  std::filesystem::remove_all(served);
}

}  // namespace
}  // namespace publisher_testing
