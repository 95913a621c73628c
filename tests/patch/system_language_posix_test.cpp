#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "app/launcher_config.h"
#include "patch/patcher_service.h"
#include "platform/locale_name.h"
#include "tests/support/temp_dir.h"

namespace {

using text::EPatcherLanguage;

constexpr const char* kLocaleVariables[] = {"LC_ALL", "LC_MESSAGES", "LANG"};

// Sets the three locale variables for one test and puts the originals back.
class SystemLanguagePosix : public testing::Test {
 protected:
  SystemLanguagePosix() {
    for (const char* name : kLocaleVariables) {
      const char* value = std::getenv(name);
      saved_.push_back(value ? std::optional<std::string>(value) : std::nullopt);
    }
  }
  ~SystemLanguagePosix() override {
    for (size_t i = 0; i < saved_.size(); ++i) SetVariable(kLocaleVariables[i], saved_[i] ? saved_[i]->c_str() : nullptr);
  }

  static void SetVariable(const char* name, const char* value) {
    if (value != nullptr) {
      setenv(name, value, 1);
    } else {
      unsetenv(name);
    }
  }
  static void SetLocale(const char* all, const char* messages, const char* lang) {
    SetVariable("LC_ALL", all);
    SetVariable("LC_MESSAGES", messages);
    SetVariable("LANG", lang);
  }

  static EPatcherLanguage ServiceLanguage(bool defaultToArabic) {
    testing_support::TempDir dir;
    LauncherConfig config;
    config.defaultToArabic = defaultToArabic;
    patch::CPatcherService service(config, {dir.wide(), L""});
    std::wstring error;
    EXPECT_TRUE(service.InitializeState(error));
    return service.GetStateSnapshot().language;
  }

 private:
  std::vector<std::optional<std::string>> saved_;
};

TEST_F(SystemLanguagePosix, FirstNonEmptyVariableNamesTheLocale) {
  struct SCase {
    const char* all;
    const char* messages;
    const char* lang;
    std::optional<std::wstring> expected;
  };
  const SCase cases[] = {
      {"ar_SA.UTF-8", "fr_FR.UTF-8", "en_US.UTF-8", L"ar_SA.UTF-8"},
      {"", "fr_FR.UTF-8", "ar_EG.UTF-8", L"fr_FR.UTF-8"},
      {nullptr, "", "ar_EG.UTF-8", L"ar_EG.UTF-8"},
      {"", "", "", std::nullopt},
      {nullptr, nullptr, nullptr, std::nullopt},
  };
  for (const SCase& c : cases) {
    SetLocale(c.all, c.messages, c.lang);
    EXPECT_EQ(platform::UserDefaultLocaleName(), c.expected) << testing::PrintToString(c.expected);
  }
}

TEST_F(SystemLanguagePosix, NewStateTakesTheDetectedLanguage) {
  struct SCase {
    const char* lang;
    bool defaultToArabic;
    EPatcherLanguage expected;
  };
  const SCase cases[] = {
      {"ar_SA.UTF-8", false, EPatcherLanguage::Arabic},
      {"AR", false, EPatcherLanguage::Arabic},
      {"fr_FR.UTF-8", true, EPatcherLanguage::Arabic},
      {"fr_FR.UTF-8", false, EPatcherLanguage::English},
      {nullptr, true, EPatcherLanguage::Arabic},
      {nullptr, false, EPatcherLanguage::English},
  };
  for (const SCase& c : cases) {
    SetLocale(nullptr, nullptr, c.lang);
    EXPECT_EQ(ServiceLanguage(c.defaultToArabic), c.expected)
        << (c.lang ? c.lang : "(unset)") << " default " << c.defaultToArabic;
  }
}

}  // namespace
