#include "patch/line_file.h"

#include <gtest/gtest.h>

#include "platform/path_text.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

// The old file stays whole until the new one is complete; a temporary left by a killed
// rewrite, even a link planted under its name, is replaced and never written through.
TEST(LineFile, RewriteGoesThroughAFreshTemporary) {
  testing_support::TempDir dir;
  const fs::path outside = dir.Write("outside", "not ours");
  const fs::path file = dir.Write("runtime/launcher.state", "old");
  const fs::path temporary = dir.path() / "runtime" / "launcher.state.tmp";
  std::error_code noLinks;  // Windows without the privilege: a plain leftover instead
  fs::create_symlink(outside, temporary, noLinks);
  if (noLinks) dir.Write("runtime/launcher.state.tmp", "left by a killed save");

  EXPECT_EQ(patch::RewriteFile(platform::FromPath(file), "new"), patch::EFileWriteResult::Written);
  EXPECT_EQ(testing_support::ReadFileBytes(file), "new");
  EXPECT_EQ(testing_support::ReadFileBytes(outside), "not ours");
  EXPECT_FALSE(fs::exists(fs::symlink_status(temporary)));
}

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
