#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "app/launcher_config.h"
#include "patch/patcher_service.h"
#include "tests/support/temp_dir.h"

namespace {

using text::EPatcherLanguage;

constexpr const char* kLocaleVariables[] = {"LC_ALL", "LC_MESSAGES", "LANG"};

void SetVariable(const char* name, const char* value) {
  if (value != nullptr) {
    setenv(name, value, 1);
  } else {
    unsetenv(name);
  }
}

// The first non-empty of LC_ALL, LC_MESSAGES and LANG names the locale; without
// an Arabic one the configured default decides.
TEST(SystemLanguagePosix, NewStateTakesTheLanguageOfTheFirstNonEmptyVariable) {
  std::optional<std::string> saved[3];
  for (int i = 0; i < 3; ++i) {
    if (const char* value = std::getenv(kLocaleVariables[i])) saved[i] = value;
  }
  struct SCase {
    const char* values[3];
    bool defaultToArabic;
    EPatcherLanguage expected;
  };
  const SCase cases[] = {
      {{"ar_SA.UTF-8", "fr_FR.UTF-8", "en_US.UTF-8"}, false, EPatcherLanguage::Arabic},
      {{"", "fr_FR.UTF-8", "ar_EG.UTF-8"}, false, EPatcherLanguage::English},
      {{nullptr, "fr_FR.UTF-8", nullptr}, true, EPatcherLanguage::Arabic},
      {{nullptr, nullptr, nullptr}, false, EPatcherLanguage::English},
  };
  for (const SCase& c : cases) {
    for (int i = 0; i < 3; ++i) SetVariable(kLocaleVariables[i], c.values[i]);
    testing_support::TempDir dir;
    LauncherConfig config;
    config.defaultToArabic = c.defaultToArabic;
    patch::CPatcherService service(config, {dir.wide(), L"", L"", L""});
    std::wstring error;
    EXPECT_TRUE(service.InitializeState(error));
    EXPECT_EQ(service.GetStateSnapshot().language, c.expected) << &c - cases;
  }
  for (int i = 0; i < 3; ++i) SetVariable(kLocaleVariables[i], saved[i] ? saved[i]->c_str() : nullptr);
}

}  // namespace
