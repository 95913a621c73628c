#include "platform/environment.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/app/scoped_environment.h"

namespace {

TEST(EnvironmentTest, ReadsWhatWasSet) {
  const struct {
    const char* name;
    std::wstring value;
  } cases[] = {
      {"plain", L"value"},
      {"non-ASCII", L"C:\\Users\\Zoë\\Ærø \u0627\u0644"},
      {"longer than a first guess", std::wstring(1000, L'x') + L"end"},
  };
  for (const auto& c : cases) {
    const testing_support::ScopedEnvironment variable(L"VL_TEST_VARIABLE", c.value);
    EXPECT_EQ(platform::EnvironmentVariable(L"VL_TEST_VARIABLE"), c.value) << c.name;
  }
}

TEST(EnvironmentTest, UnsetOrEmptyReadsAsEmpty) {
  {
    const testing_support::ScopedEnvironment variable(L"VL_TEST_VARIABLE", std::nullopt);
    EXPECT_EQ(platform::EnvironmentVariable(L"VL_TEST_VARIABLE"), L"");
  }
  const testing_support::ScopedEnvironment variable(L"VL_TEST_VARIABLE", L"");
  EXPECT_EQ(platform::EnvironmentVariable(L"VL_TEST_VARIABLE"), L"");
}

}  // namespace
