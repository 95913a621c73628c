#include "patch/line_file.h"

#include <gtest/gtest.h>

namespace {

// Unsigned and signed decimals in one table: `ok` per parser, `value` where it accepts.
TEST(LineFile, DecimalsAreDigitsOnlyWithin64Bits) {
  struct SCase {
    const wchar_t* text;
    bool unsignedOk;
    bool signedOk;
    std::int64_t value;
  };
  const SCase cases[] = {
      {L"007", true, true, 7},
      {L"-0", false, true, 0},
      {L"-5", false, true, -5},
      {L"9223372036854775807", true, true, INT64_MAX},
      {L"9223372036854775808", true, false, INT64_MIN},  // unsigned reads the bits back as INT64_MIN
      {L"-9223372036854775808", false, true, INT64_MIN},
      {L"-9223372036854775809", false, false, 0},
      {L"18446744073709551615", true, false, -1},
      {L"18446744073709551616", false, false, 0},
      {L"", false, false, 0},
      {L"-", false, false, 0},
      {L"--5", false, false, 0},
      {L"+1", false, false, 0},
      {L"12abc", false, false, 0},
      {L" 12", false, false, 0},
      {L"\u0661", false, false, 0},  // an Arabic-Indic digit is not a decimal digit here
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(testing::PrintToString(std::wstring(c.text)));
    std::uint64_t unsignedValue = 99;
    std::int64_t signedValue = 99;
    EXPECT_EQ(patch::ParseUnsignedDecimal(c.text, unsignedValue), c.unsignedOk);
    EXPECT_EQ(unsignedValue, c.unsignedOk ? static_cast<std::uint64_t>(c.value) : 99u);
    EXPECT_EQ(patch::ParseSignedDecimal(c.text, signedValue), c.signedOk);
    EXPECT_EQ(signedValue, c.signedOk ? c.value : 99);
  }
}

}  // namespace
