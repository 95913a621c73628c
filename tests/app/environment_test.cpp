#include "platform/environment.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/app/scoped_environment.h"

namespace {

TEST(EnvironmentTest, ReadsWhatWasSetAndEmptyWhenUnset) {
  const std::optional<std::wstring> values[] = {
      L"value", L"C:\\Users\\Zoë\\Ærø \u0627\u0644", std::wstring(1000, L'x') + L"end", L"", std::nullopt};
  for (const auto& value : values) {
    const testing_support::ScopedEnvironment variable(L"VL_TEST_VARIABLE", value);
    EXPECT_EQ(platform::EnvironmentVariable(L"VL_TEST_VARIABLE"), value.value_or(L"")) << value.has_value();
  }
}

}  // namespace
