#include "patch/integrity_cache.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

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
  std::string CacheBytes() const { return testing_support::ReadFileBytes(CacheFile()); }

  testing_support::TempDir dir_;
};

TEST(IntegrityCacheKey, NormalisesSeparatorsDotsAndCase) {
  const std::pair<const wchar_t*, const wchar_t*> cases[] = {
      {L"C:\\Games\\App\\Data.PAK", L"c:/games/app/data.pak"},
      {L"/Games/App/./sub/../Data.pak", L"/games/app/data.pak"},
      {L"/games//app/data.pak", L"/games/app/data.pak"},
      {L"/Games/.App/..Data.pak", L"/games/.app/..data.pak"},
      {L"/games/app/..", L"/games/"},
  };
  for (const auto& [path, key] : cases) EXPECT_EQ(IntegrityCacheKey(path), key) << testing::PrintToString(path);
}

TEST_F(IntegrityCacheTest, LookupNeedsTheSameKeySizeTimeAndAHashAndRecordsSurviveAReload) {
  const struct {
    std::wstring path;
    std::uint64_t size;
    std::int64_t time;
  } records[] = {
      {L"/g/negative", 5, -133},
      {L"/g/extremes", std::numeric_limits<std::uint64_t>::max(), std::numeric_limits<std::int64_t>::min()},
      {L"/g/\u0645\u0644\u0641.pak", 0, 0},
      {L"/g/a|b", 1, 2},
  };
  CIntegrityCache cache(RuntimeFolder());
  cache.Store(L"C:\\Game\\Data.pak", 10, 20, kHashA);
  cache.Store(L"c:/game/data.PAK", 10, 20, kHashB);  // the same record
  cache.Store(L"/g/empty", 10, 20, L"");
  for (const auto& r : records) cache.Store(r.path, r.size, r.time, kHashA);
  std::wstring hash = L"untouched";
  EXPECT_FALSE(cache.Lookup(L"c:/game/data.pak", 11, 20, hash));
  EXPECT_FALSE(cache.Lookup(L"c:/game/data.pak", 10, 21, hash));
  EXPECT_FALSE(cache.Lookup(L"/g/empty", 10, 20, hash));
  EXPECT_FALSE(cache.Lookup(L"/g/other", 10, 20, hash));
  EXPECT_EQ(hash, L"untouched");
  ASSERT_TRUE(cache.Lookup(L"C:/GAME/DATA.PAK", 10, 20, hash));
  EXPECT_EQ(hash, kHashB);
  cache.Persist();
  const std::string bytes = CacheBytes();
  EXPECT_NE(bytes.find("c:/game/data.pak|10|20|" + std::string(64, 'b') + "\n"), std::string::npos) << bytes;
  EXPECT_EQ(bytes.find("data.pak"), bytes.rfind("data.pak")) << bytes;

  CIntegrityCache reloaded(RuntimeFolder());
  for (const auto& r : records) {
    EXPECT_TRUE(reloaded.Lookup(r.path, r.size, r.time, hash)) << testing::PrintToString(r.path);
    EXPECT_EQ(hash, kHashA);
  }
}

TEST_F(IntegrityCacheTest, MalformedLinesAreSkippedAndTheRestLoads) {
  const std::string hashA(64, 'a');
  dir_.Write("runtime/integrity.cache",
             "garbage\n|||\n/g/two|fields\n/g/badsize|x|2|" + hashA + "\n/g/negsize|-1|2|" + hashA +
                 "\n/g/badtime|1|2.5|" + hashA + "\n\n  /g/good | 7 | -3 | " + hashA + " \r\n\xFF\xFE|1|2|" + hashA +
                 "\n");
  CIntegrityCache cache(RuntimeFolder());
  std::wstring hash;
  EXPECT_TRUE(cache.Lookup(L"/g/good", 7, -3, hash));
  EXPECT_EQ(hash, kHashA);
  EXPECT_FALSE(cache.Lookup(L"/g/badsize", 0, 2, hash));
  EXPECT_FALSE(cache.Lookup(L"/g/negsize", std::numeric_limits<std::uint64_t>::max(), 2, hash));
  EXPECT_FALSE(cache.Lookup(L"/g/badtime", 1, 2, hash));
  EXPECT_FALSE(cache.Lookup(L"", 0, 0, hash));
}

TEST_F(IntegrityCacheTest, PersistWritesOnlyWhenLoadedAndDirtyAndRetriesAfterAFailure) {
  {
    CIntegrityCache neverUsed(RuntimeFolder());
    neverUsed.Persist();
    EXPECT_FALSE(std::filesystem::exists(CacheFile()));
  }
  dir_.Write("runtime/integrity.cache", "/g/a|1|2|" + std::string(64, 'a') + "\n");
  CIntegrityCache cache(RuntimeFolder());
  std::wstring hash;
  ASSERT_TRUE(cache.Lookup(L"/g/a", 1, 2, hash));
  std::filesystem::remove_all(dir_.path() / "runtime");
  cache.Persist();  // loaded but clean
  EXPECT_FALSE(std::filesystem::exists(CacheFile()));

  const auto blocker = dir_.Write("runtime", "a file where the runtime folder should be");
  cache.Store(L"/g/c", 5, 6, kHashA);
  cache.Persist();  // fails, and must keep its changes
  std::filesystem::remove(blocker);
  cache.Persist();
  EXPECT_NE(CacheBytes().find("/g/a|1|2|"), std::string::npos) << CacheBytes();
  EXPECT_NE(CacheBytes().find("/g/c|5|6|"), std::string::npos) << CacheBytes();

  std::filesystem::remove(CacheFile());
  cache.Persist();  // clean again after a complete write
  EXPECT_FALSE(std::filesystem::exists(CacheFile()));
}

}  // namespace
