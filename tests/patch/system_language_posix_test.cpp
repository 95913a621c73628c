#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "app/launcher_config.h"
#include "patch/patcher_service.h"
#include "tests/app/scoped_environment.h"
#include "tests/support/temp_dir.h"

namespace {

using testing_support::ScopedEnvironment;
using text::EPatcherLanguage;

// The first non-empty of LC_ALL, LC_MESSAGES and LANG names the locale; without
// an Arabic one the configured default decides.
TEST(SystemLanguagePosix, NewStateTakesTheLanguageOfTheFirstNonEmptyVariable) {
  const struct {
    std::optional<std::wstring> all, messages, lang;
    bool defaultToArabic;
    EPatcherLanguage expected;
  } cases[] = {
      {L"ar_SA.UTF-8", L"fr_FR.UTF-8", L"en_US.UTF-8", false, EPatcherLanguage::Arabic},
      {L"", L"fr_FR.UTF-8", L"ar_EG.UTF-8", false, EPatcherLanguage::English},
      {std::nullopt, L"", L"ar_EG.UTF-8", false, EPatcherLanguage::Arabic},
      {std::nullopt, L"fr_FR.UTF-8", std::nullopt, true, EPatcherLanguage::Arabic},
      {std::nullopt, std::nullopt, std::nullopt, false, EPatcherLanguage::English},
  };
  for (const auto& c : cases) {
    const ScopedEnvironment all(L"LC_ALL", c.all), messages(L"LC_MESSAGES", c.messages), lang(L"LANG", c.lang);
    testing_support::TempDir dir;
    LauncherConfig config;
    config.defaultToArabic = c.defaultToArabic;
    patch::CPatcherService service(config, {dir.wide(), L"", L"", L""});
    std::wstring error;
    EXPECT_TRUE(service.InitializeState(error));
    EXPECT_EQ(service.GetStateSnapshot().language, c.expected) << &c - cases;
  }
}

}  // namespace
