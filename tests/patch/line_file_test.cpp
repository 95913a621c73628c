#include "patch/line_file.h"

#include <gtest/gtest.h>

#include <limits>


namespace {

TEST(LineFile, UnsignedDecimalsAreDigitsOnlyWithin64Bits) {
  struct SCase {
    const wchar_t* text;
    bool ok;
    std::uint64_t value;
  };
  const SCase cases[] = {
      {L"0", true, 0},
      {L"42", true, 42},
      {L"007", true, 7},
      {L"18446744073709551615", true, std::numeric_limits<std::uint64_t>::max()},
      {L"18446744073709551616", false, 0},
      {L"99999999999999999999", false, 0},
      {L"", false, 0},
      {L"-1", false, 0},
      {L"+1", false, 0},
      {L"12abc", false, 0},
      {L" 12", false, 0},
      {L"1 2", false, 0},
      {L"\u0661", false, 0},  // an Arabic-Indic digit is not a decimal digit here
  };
  for (const SCase& c : cases) {
    std::uint64_t value = 99;
    EXPECT_EQ(patch::ParseUnsignedDecimal(c.text, value), c.ok) << testing::PrintToString(std::wstring(c.text));
    EXPECT_EQ(value, c.ok ? c.value : 99u) << testing::PrintToString(std::wstring(c.text));
  }
}

TEST(LineFile, SignedDecimalsTakeOneLeadingMinus) {
  struct SCase {
    const wchar_t* text;
    bool ok;
    std::int64_t value;
  };
  const SCase cases[] = {
      {L"-5", true, -5},
      {L"5", true, 5},
      {L"-0", true, 0},
      {L"9223372036854775807", true, std::numeric_limits<std::int64_t>::max()},
      {L"9223372036854775808", false, 0},
      {L"-9223372036854775808", true, std::numeric_limits<std::int64_t>::min()},
      {L"-9223372036854775809", false, 0},
      {L"-", false, 0},
      {L"--5", false, 0},
      {L"+5", false, 0},
  };
  for (const SCase& c : cases) {
    std::int64_t value = 99;
    EXPECT_EQ(patch::ParseSignedDecimal(c.text, value), c.ok) << testing::PrintToString(std::wstring(c.text));
    EXPECT_EQ(value, c.ok ? c.value : 99) << testing::PrintToString(std::wstring(c.text));
  }
}

}  // namespace
