#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "platform/path_text.h"
#include "text/utf.h"

namespace {

TEST(SystemPath, TakesTheLongPathFormOfAnAbsoluteNormalPath) {
  const std::wstring current = std::filesystem::current_path().native();
  const struct {
    std::wstring given;
    std::wstring expected;
  } rows[] = {
      {L"C:\\Games\\x\\..\\Vardeni/./app/a.dat", L"\\\\?\\C:\\Games\\Vardeni\\app\\a.dat"},
      {L"\\\\server\\share\\Vardeni/a.dat", L"\\\\?\\UNC\\server\\share\\Vardeni\\a.dat"},
      {L"app/a.dat", L"\\\\?\\" + current + L"\\app\\a.dat"},
      // Already literal, or a device: kept as given.
      {L"\\\\?\\C:\\x\\..\\a.dat", L"\\\\?\\C:\\x\\..\\a.dat"},
      {L"\\\\.\\pipe\\a", L"\\\\.\\pipe\\a"},
      {L"", L""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(text::WideToUtf8(platform::SystemPath(row.given).native()), text::WideToUtf8(row.expected));
  }
}

}  // namespace
