#include "platform/os_description.h"

#include <gtest/gtest.h>

#include <regex>

#include "tests/support/temp_dir.h"
#include "text/utf.h"

namespace {

TEST(OperatingSystemDescription, NamesTheSystemAndItsVersion) {
  const std::string description = text::WideToUtf8(platform::OperatingSystemDescription());
#ifdef _WIN32
  EXPECT_TRUE(std::regex_match(description, std::regex(R"(Windows \d+\.\d+\.\d+)"))) << description;
#else
  // The kernel publishes the same release text here.
  std::string release = testing_support::ReadFileBytes("/proc/sys/kernel/osrelease");
  while (!release.empty() && release.back() == '\n') release.pop_back();
  ASSERT_FALSE(release.empty());
  EXPECT_EQ(description, "Linux " + release);
#endif
}

}  // namespace
