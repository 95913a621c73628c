#include <gtest/gtest.h>

#include <string>

#include "app/launcher_config.h"
#include "patch/patcher_service.h"
#include "platform/locale_name.h"
#include "tests/support/temp_dir.h"

namespace {

using text::EPatcherLanguage;

// Wine reports "en-US", which is not Arabic, so the configured default decides.
TEST(SystemLanguageWin, NonArabicLocaleFallsToTheConfiguredDefault) {
  const auto name = platform::UserDefaultLocaleName();
  if (name && text::LanguageForLocaleName(name, false) == EPatcherLanguage::Arabic) {
    GTEST_SKIP() << "this machine's locale is Arabic";
  }
  for (const bool defaultToArabic : {true, false}) {
    testing_support::TempDir dir;
    LauncherConfig config;
    config.defaultToArabic = defaultToArabic;
    patch::CPatcherService service(config, {dir.wide(), L"", L"", L""});
    std::wstring error;
    ASSERT_TRUE(service.InitializeState(error));
    EXPECT_EQ(service.GetStateSnapshot().language,
              defaultToArabic ? EPatcherLanguage::Arabic : EPatcherLanguage::English);
  }
}

}  // namespace
