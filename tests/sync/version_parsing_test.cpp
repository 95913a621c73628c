// Release numbers read from a channel pointer and launcher versions compared.
#include <gtest/gtest.h>

#include <optional>

#include "patch/channel_pointer.h"
#include "patch/version_order.h"

namespace {

struct SPointerCase {
  const char* text;
  std::optional<std::uint64_t> release;  // empty: refused
};

TEST(ChannelPointer, ParsesOnlyATrimmedPositiveDecimalWithin64Bits) {
  const SPointerCase cases[] = {
      {"  17\r\n", 17},
      {"\t42", 42},
      {"18446744073709551615", 18446744073709551615ull},
      {"0", std::nullopt},
      {"-3", std::nullopt},
      {"17 18", std::nullopt},
      {"0x11", std::nullopt},
      {"18446744073709551616", std::nullopt},
      {"", std::nullopt},
      {" \r\n\t", std::nullopt},
      {"1.5", std::nullopt},
  };
  for (const SPointerCase& c : cases) {
    std::uint64_t release = 12345;
    const bool parsed = patch::ParseChannelPointer(c.text, release);
    EXPECT_EQ(parsed, c.release.has_value()) << testing::PrintToString(c.text);
    EXPECT_EQ(release, c.release.value_or(12345)) << testing::PrintToString(c.text);
  }
}

struct SVersionCase {
  const wchar_t* candidate;
  const wchar_t* current;
  bool newer;
};

TEST(VersionOrder, ComparesDottedVersionsComponentByComponent) {
  const SVersionCase cases[] = {
      {L"1.0.10", L"1.0.5", true},   {L"2", L"1.9.9.9", true},
      {L"1.0.5.1", L"1.0.5", true},  {L"999999999", L"1", true},
      {L"1.0.5", L"1.0.5", false},   {L"1.0.5.0", L"1.0.5", false},
      {L"1.0.5", L"1.0.5.0", false}, {L"1.0.5", L"1.0.10", false},
      {L"01.0.6", L"1.0.5", true},  // leading zeros are digits like any other
  };
  for (const SVersionCase& c : cases) {
    EXPECT_EQ(patch::IsNewerVersion(c.candidate, c.current), c.newer)
        << testing::PrintToString(c.candidate) << " vs " << testing::PrintToString(c.current);
  }
}

TEST(VersionOrder, AMalformedVersionIsNeverNewer) {
  for (const wchar_t* malformed : {L"1.0.x", L"1.0.5.0.1", L"", L"1..6", L".1", L"1.", L"-1", L"+2", L"1.0.6 ",
                                   L" 1.0.6", L"1,0,6", L"1234567890", L"v1.0.6", L"\x0661.0.6"}) {
    EXPECT_FALSE(patch::IsNewerVersion(malformed, L"1.0.5")) << testing::PrintToString(malformed);
    // Against a malformed current version nothing is newer either.
    EXPECT_FALSE(patch::IsNewerVersion(L"9.9.9", malformed)) << testing::PrintToString(malformed);
  }
}

}  // namespace
