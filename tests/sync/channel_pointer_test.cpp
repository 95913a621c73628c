#include "patch/channel_pointer.h"

#include <gtest/gtest.h>

#include <optional>

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

TEST(ChannelPointer, OnlyExactlyBetaReadsTheBetaPointer) {
  EXPECT_EQ(patch::ChannelPointerFileName(L"beta"), L"pointer-beta.txt");
  for (const wchar_t* channel : {L"", L"stable", L"BETA", L"Beta", L"beta ", L"gamma"}) {
    EXPECT_EQ(patch::ChannelPointerFileName(channel), L"pointer.txt") << testing::PrintToString(channel);
  }
}

}  // namespace
