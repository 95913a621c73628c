#include "app/launcher_config.h"

#include <gtest/gtest.h>

namespace {

TEST(LauncherConfigTest, OnlyAnExactLowerCaseHttpsSchemeCounts) {
  const struct {
    const wchar_t* host;
    bool https;
  } cases[] = {
      {L"https://patch.example/", true}, {L"https://", true},  {L"HTTPS://x", false}, {L"Https://x", false},
      {L"http://x", false},              {L"https:/", false},  {L"", false},          {L" https://x", false},
  };
  for (const auto& c : cases) EXPECT_EQ(IsHttpsPatchHost(c.host), c.https) << c.host;
}

}  // namespace
