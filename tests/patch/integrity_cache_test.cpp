#include "patch/integrity_cache.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

#include "app/launcher_config.h"
#include "patch/patcher_service.h"
#include "platform/file_time.h"
#include "platform/path_text.h"
#include "tests/support/temp_dir.h"

namespace {

using patch::CIntegrityCache;
using patch::IntegrityCacheKey;

const std::wstring kHashA(64, L'a');
const std::wstring kHashB(64, L'b');

class IntegrityCacheTest : public testing::Test {
 protected:
  std::wstring RuntimeFolder() const { return dir_.wide() + L"/runtime"; }
  std::filesystem::path CacheFile() const { return dir_.path() / "runtime" / "integrity.cache"; }
  std::wstring GameFile(const std::wstring& name) const { return dir_.wide() + L"/game/" + name; }

  testing_support::TempDir dir_;
};

TEST(IntegrityCacheKey, NormalisesSeparatorsDotsAndCase) {
  struct SCase {
    const wchar_t* path;
    const wchar_t* key;
  };
  const SCase cases[] = {
      {L"C:\\Games\\App\\Data.PAK", L"c:/games/app/data.pak"},
      {L"c:/games/app/data.pak", L"c:/games/app/data.pak"},
      {L"/Games/App/./sub/../Data.pak", L"/games/app/data.pak"},
      {L"/games//app/data.pak", L"/games/app/data.pak"},
      {L"/Games/.App/..Data.pak", L"/games/.app/..data.pak"},
      {L"/Games/App/", L"/games/app/"},
      {L"/games/app/..", L"/games/"},
  };
  for (const SCase& c : cases) EXPECT_EQ(IntegrityCacheKey(c.path), c.key) << testing::PrintToString(c.path);
}

TEST_F(IntegrityCacheTest, PathsDifferingOnlyInCaseOrSeparatorShareOneRecord) {
  CIntegrityCache cache(RuntimeFolder());
  cache.Store(L"C:\\Game\\Data.pak", 10, 20, kHashA);
  cache.Store(L"c:/game/data.PAK", 10, 20, kHashB);
  std::wstring hash;
  ASSERT_TRUE(cache.Lookup(L"C:/GAME/DATA.PAK", 10, 20, hash));
  EXPECT_EQ(hash, kHashB);
  cache.Persist();
  const std::string bytes = testing_support::ReadFileBytes(CacheFile());
  EXPECT_EQ(bytes, "c:/game/data.pak|10|20|" + std::string(64, 'b') + "\n");
}

TEST_F(IntegrityCacheTest, LookupNeedsSameSizeSameTimeAndAHash) {
  CIntegrityCache cache(RuntimeFolder());
  cache.Store(GameFile(L"a"), 10, 20, kHashA);
  cache.Store(GameFile(L"empty"), 10, 20, L"");
  std::wstring hash = L"untouched";
  EXPECT_FALSE(cache.Lookup(GameFile(L"a"), 11, 20, hash));
  EXPECT_FALSE(cache.Lookup(GameFile(L"a"), 10, 21, hash));
  EXPECT_FALSE(cache.Lookup(GameFile(L"empty"), 10, 20, hash));
  EXPECT_FALSE(cache.Lookup(GameFile(L"other"), 10, 20, hash));
  EXPECT_EQ(hash, L"untouched");
  EXPECT_TRUE(cache.Lookup(GameFile(L"a"), 10, 20, hash));
  EXPECT_EQ(hash, kHashA);
}

TEST_F(IntegrityCacheTest, RecordsRoundTripThroughTheFile) {
  constexpr auto kMinTime = std::numeric_limits<std::int64_t>::min();
  constexpr auto kMaxSize = std::numeric_limits<std::uint64_t>::max();
  const std::wstring arabicName = L"\u0645\u0644\u0641.pak";
  {
    CIntegrityCache cache(RuntimeFolder());
    cache.Store(GameFile(L"negative"), 5, -133, kHashA);
    cache.Store(GameFile(L"extremes"), kMaxSize, kMinTime, kHashB);
    cache.Store(GameFile(arabicName), 0, 0, kHashA);
    cache.Store(GameFile(L"a|b"), 1, 2, kHashB);
    cache.Persist();
  }
  CIntegrityCache reloaded(RuntimeFolder());
  std::wstring hash;
  EXPECT_TRUE(reloaded.Lookup(GameFile(L"negative"), 5, -133, hash));
  EXPECT_EQ(hash, kHashA);
  EXPECT_TRUE(reloaded.Lookup(GameFile(L"extremes"), kMaxSize, kMinTime, hash));
  EXPECT_EQ(hash, kHashB);
  EXPECT_TRUE(reloaded.Lookup(GameFile(arabicName), 0, 0, hash));
  EXPECT_EQ(hash, kHashA);
  EXPECT_TRUE(reloaded.Lookup(GameFile(L"a|b"), 1, 2, hash));
  EXPECT_EQ(hash, kHashB);
  EXPECT_NE(testing_support::ReadFileBytes(CacheFile()).find("|5|-133|"), std::string::npos);
}

TEST_F(IntegrityCacheTest, MalformedLinesAreSkippedAndTheRestLoads) {
  const std::string hashA(64, 'a');
  dir_.Write("runtime/integrity.cache",
             "garbage\n"
             "/g/two|fields\n"
             "/g/three|1|fields\n"
             "/g/badsize|x|2|" + hashA + "\n"
             "/g/negsize|-1|2|" + hashA + "\n"
             "/g/badtime|1|2.5|" + hashA + "\n"
             "\n"
             "  /g/good | 7 | -3 | " + hashA + " \r\n"
             "\xFF\xFE|1|2|" + hashA + "\n");
  CIntegrityCache cache(RuntimeFolder());
  std::wstring hash;
  EXPECT_TRUE(cache.Lookup(L"/g/good", 7, -3, hash));
  EXPECT_EQ(hash, kHashA);
  EXPECT_FALSE(cache.Lookup(L"/g/badsize", 0, 2, hash));
  EXPECT_FALSE(cache.Lookup(L"/g/negsize", std::numeric_limits<std::uint64_t>::max(), 2, hash));
  EXPECT_FALSE(cache.Lookup(L"/g/badtime", 1, 2, hash));
}

TEST_F(IntegrityCacheTest, MissingOrCorruptFileIsAnEmptyCache) {
  for (const char* content : {static_cast<const char*>(nullptr), "\x01\x02|||\xFF", "|||\n||||\n"}) {
    testing_support::TempDir dir;
    if (content != nullptr) dir.Write("integrity.cache", content);
    CIntegrityCache cache(dir.wide());
    std::wstring hash;
    EXPECT_FALSE(cache.Lookup(L"", 0, 0, hash));
    EXPECT_FALSE(cache.Lookup(L"/g/x", 0, 0, hash));
  }
}

TEST_F(IntegrityCacheTest, PersistWritesOnlyWhenLoadedAndDirty) {
  {
    CIntegrityCache neverUsed(RuntimeFolder());
    neverUsed.Persist();
    EXPECT_FALSE(std::filesystem::exists(CacheFile()));
  }
  const std::string original = "/g/a|1|2|" + std::string(64, 'a') + "\n/g/b|3|4|" + std::string(64, 'b') + "\n";
  dir_.Write("runtime/integrity.cache", original);
  CIntegrityCache cache(RuntimeFolder());
  std::wstring hash;
  ASSERT_TRUE(cache.Lookup(L"/g/a", 1, 2, hash));
  // Loaded but clean: a rewrite would show as a changed record order or format.
  std::filesystem::remove(CacheFile());
  cache.Persist();
  EXPECT_FALSE(std::filesystem::exists(CacheFile()));
  cache.Store(L"/g/c", 5, 6, kHashA);
  cache.Persist();
  EXPECT_TRUE(std::filesystem::exists(CacheFile()));
  // Clean again after a complete write.
  std::filesystem::remove(CacheFile());
  cache.Persist();
  EXPECT_FALSE(std::filesystem::exists(CacheFile()));
}

TEST_F(IntegrityCacheTest, FailedPersistKeepsTheChangesForTheNextAttempt) {
  const auto blocker = dir_.Write("runtime", "a file where the runtime folder should be");
  CIntegrityCache cache(RuntimeFolder());
  cache.Store(L"/g/a", 1, 2, kHashA);
  cache.Persist();
  std::filesystem::remove(blocker);
  cache.Persist();
  EXPECT_EQ(testing_support::ReadFileBytes(CacheFile()), "/g/a|1|2|" + std::string(64, 'a') + "\n");
}

TEST_F(IntegrityCacheTest, ServiceStoresTheFilesCurrentTimeAndPersists) {
  LauncherConfig config;
  patch::CPatcherService service(config, {RuntimeFolder(), L"", L"", L""});
  std::wstring error;
  ASSERT_TRUE(service.InitializeState(error));
  const auto file = dir_.Write("game/data.pak", "12345");
  const std::wstring filePath = platform::FromPath(file);
  platform::SFileStamp stamp;
  ASSERT_TRUE(platform::ReadFileStamp(filePath, stamp));
  ASSERT_NE(stamp.lastWriteTime, 0);

  service.StoreCachedHashOnActor(filePath, 5, kHashA);
  service.StoreCachedHashOnActor(GameFile(L"missing.pak"), 9, kHashB);
  std::wstring hash;
  EXPECT_TRUE(service.LookupCachedHashOnActor(filePath, 5, stamp.lastWriteTime, hash));
  EXPECT_EQ(hash, kHashA);
  EXPECT_TRUE(service.LookupCachedHashOnActor(GameFile(L"missing.pak"), 9, 0, hash));
  EXPECT_EQ(hash, kHashB);

  service.PersistIntegrityCache();
  EXPECT_TRUE(CIntegrityCache(RuntimeFolder()).Lookup(filePath, 5, stamp.lastWriteTime, hash));

  std::filesystem::remove(CacheFile());
  service.StoreCachedHashOnActor(filePath, 5, kHashB);
  ASSERT_TRUE(service.SaveState(error));
  EXPECT_TRUE(CIntegrityCache(RuntimeFolder()).Lookup(filePath, 5, stamp.lastWriteTime, hash));
  EXPECT_EQ(hash, kHashB);
}

}  // namespace
