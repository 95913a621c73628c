#include "log/redaction.h"

#include <gtest/gtest.h>

namespace {

struct SRedactionCase {
  const wchar_t* text;
  const wchar_t* path;
  const wchar_t* expected;
};

TEST(Redaction, MasksOnlyWholeOccurrencesOfTheProfileFolder) {
  const SRedactionCase cases[] = {
      {L"C:\\Users\\Ann\\x", L"C:\\Users\\Ann", L"<P>\\x"},
      {L"C:\\Users\\Ann.old", L"C:\\Users\\Ann", L"C:\\Users\\Ann.old"},
      {L"C:\\Users\\Ann_2 C:\\Users\\Ann-b C:\\Users\\Ann7", L"C:\\Users\\Ann",
       L"C:\\Users\\Ann_2 C:\\Users\\Ann-b C:\\Users\\Ann7"},
      {L"C:\\Users\\Annë", L"C:\\Users\\Ann", L"C:\\Users\\Annë"},
      {L"c:/users/ANN/game.exe", L"C:\\Users\\Ann", L"<P>/game.exe"},
      {L"C:\\Users\\Ann\\", L"C:\\Users\\Ann\\\\/", L"<P>\\"},
      {L"/home/ann", L"/home/ann/", L"<P>"},
      {L"'C:\\Users\\Ann' and C:/Users/Ann/b, C:\\Users\\Anna, (C:\\USERS\\ANN)", L"C:\\Users\\Ann",
       L"'<P>' and <P>/b, C:\\Users\\Anna, (<P>)"},
      {L"C:\\Users\\Ann\\x", L"C:\\Users\\Anna", L"C:\\Users\\Ann\\x"},
      {L"D:\\ÉMILE\\Данил\\a", L"d:\\émile\\даНИЛ", L"<P>\\a"},
      {L"C:\\Users\\Ann\\x", L"", L"C:\\Users\\Ann\\x"},
      {L"/anything", L"//", L"/anything"},
      {L"", L"C:\\Users\\Ann", L""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(logging::RedactPath(c.text, c.path, L"<P>"), c.expected) << "text " << testing::PrintToString(c.text);
  }
}

}  // namespace
