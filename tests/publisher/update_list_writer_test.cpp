// The update list writer and the name rule, in process.

#include "tools/publisher/update_list_writer.h"

#include <gtest/gtest.h>

#include "text/utf.h"
#include "tools/publisher/game_folder_scan.h"

namespace {

TEST(UpdateListWriter, WhatItWritesReadsBackAsTheSameList) {
  patch::SManifest list;
  list.version = 9007199254740992u;  // 2^53: the largest release a JSON reader keeps exactly
  list.channel = L"beta";
  list.generatedAt = publisher::UtcTimestamp(std::chrono::sys_days{std::chrono::year{2024} / 2 / 29} +
                                             std::chrono::hours{23} + std::chrono::minutes{5} +
                                             std::chrono::seconds{9} + std::chrono::milliseconds{999});
  EXPECT_EQ(list.generatedAt, L"2024-02-29T23:05:09Z");
  list.hasLauncher = true;
  list.launcherProductVersion = L"1.0.6";
  list.launcherSize = 4096;
  list.launcherSha256 = std::wstring(64, L'a');
  list.files = {{text::Utf8ToWide("d\xC3\xA9j\xC3\xA0/\xF0\x9F\x98\x80 \"q\".txt"), 0, std::wstring(64, L'0')},
                {L"game.exe", 9007199254740992u, std::wstring(64, L'f')}};
  const std::string bytes = publisher::WriteUpdateList(list);
  patch::SManifest read;
  ASSERT_EQ(patch::ParseManifest(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(), list.version,
                                 L"beta", 0, read),
            patch::EManifestVerdict::Valid);
  EXPECT_EQ(read, list);

  list.hasLauncher = false;
  list.launcherProductVersion.clear();
  list.launcherSize = 0;
  list.launcherSha256.clear();
  const std::string without = publisher::WriteUpdateList(list);
  EXPECT_EQ(without.find("launcher"), std::string::npos);
}

TEST(GameFolderNames, WindowsStorableNames) {
  for (const wchar_t* name : {L"a.txt", L"cons.txt", L"com0", L"com10.txt", L"lpt", L".hidden", L"x y"}) {
    EXPECT_TRUE(publisher::IsWindowsStorableName(name)) << text::WideToUtf8(name);
  }
  for (const wchar_t* name : {L"", L"a<b", L"a>b", L"a:b", L"a\"b", L"a\\b", L"a|b", L"a?b", L"a*b", L"a\x1f",
                              L"trailing.", L"trailing ", L"con.", L"CON", L"con.txt", L"Nul", L"aux .log", L"COM1", L"lpt9.x"}) {
    EXPECT_FALSE(publisher::IsWindowsStorableName(name)) << text::WideToUtf8(name);
  }
}

}  // namespace
