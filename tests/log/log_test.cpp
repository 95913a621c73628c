#include "log/log.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "log/redaction.h"
#include "platform/path_text.h"
#include "tests/support/temp_dir.h"
#include "text/utf.h"

namespace {

using logging::ELogLevel;
using testing_support::ReadFileBytes;
using testing_support::TempDir;

constexpr std::uintmax_t kOneMebibyte = 1'048'576;

// Groups: level tag, category, message.
const std::regex kLinePattern(
    R"(\d{4}-(?:0[1-9]|1[0-2])-(?:0[1-9]|[12]\d|3[01]) (?:[01]\d|2[0-3]):[0-5]\d:[0-5]\d (INFO |WARN |ERROR) \[([^\]]*)\] (.*))");

std::vector<std::string> SplitLines(const std::string& bytes) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  for (std::size_t end; (end = bytes.find('\n', start)) != std::string::npos; start = end + 1) {
    lines.push_back(bytes.substr(start, end - start));
  }
  EXPECT_EQ(start, bytes.size()) << "text after the last line feed";
  return lines;
}

// The message part of a line, after checking the whole line's shape.
std::string MessageOf(const std::string& line) {
  std::smatch parts;
  EXPECT_TRUE(std::regex_match(line, parts, kLinePattern)) << line;
  return parts.size() == 4 ? parts[3].str() : std::string();
}

class LogFile : public testing::Test {
 protected:
  void SetUp() override { logging::OpenLog(dir_.wide(), L"", L""); }
  void TearDown() override { logging::OpenLog(L"", L"", L""); }

  std::filesystem::path LogPath() const { return dir_.path() / platform::ToPath(logging::kLogFileName); }
  std::filesystem::path PreviousPath() const {
    return dir_.path() / platform::ToPath(logging::kPreviousLogFileName);
  }
  std::vector<std::string> Lines() const { return SplitLines(ReadFileBytes(LogPath())); }

  TempDir dir_;
};

TEST_F(LogFile, LineCarriesTimestampLevelCategoryAndOneLineUtf8MessageWithBothMasks) {
  logging::OpenLog(dir_.wide(), L"C:\\Users\\Ann\\", L"/home/ann");
  logging::LogInfo(L"start", L"launcher 1.0.5");
  logging::LogWarning(L"patch", L"تحديث");
  logging::LogError(L"play", L"C:/users/ann/a.txt; /HOME/ANN/b; C:\\Users\\Anna; /home/ann.old");
  logging::WriteLog(static_cast<ELogLevel>(7), L"net", L"y\r\nz\n\r\r");

  const std::vector<std::string> lines = Lines();
  ASSERT_EQ(lines.size(), 4u);
  const std::string mask = text::WideToUtf8(logging::kProfileMask);
  const std::string masked = mask + "/a.txt; " + mask + "/b; C:\\Users\\Anna; /home/ann.old";
  const char* const expected[][3] = {{"INFO ", "start", "launcher 1.0.5"},
                                     {"WARN ", "patch", "\xD8\xAA\xD8\xAD\xD8\xAF\xD9\x8A\xD8\xAB"},
                                     {"ERROR", "play", masked.c_str()},
                                     {"ERROR", "net", "y z   "}};
  for (std::size_t i = 0; i < lines.size(); ++i) {
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(lines[i], parts, kLinePattern)) << lines[i];
    EXPECT_EQ(parts[1], expected[i][0]);
    EXPECT_EQ(parts[2], expected[i][1]);
    EXPECT_EQ(parts[3], expected[i][2]);
  }
}

TEST_F(LogFile, RotatesOnlyWhenTheLineWouldPassOneMebibyte) {
  // Lines have a fixed length apart from the message, so a probe gives it.
  TempDir probe;
  logging::OpenLog(probe.wide(), L"", L"");
  logging::LogInfo(L"rotate", L"probe");
  const std::uintmax_t lineBytes = std::filesystem::file_size(probe.path() / platform::ToPath(logging::kLogFileName));

  for (const bool rotates : {false, true}) {
    SCOPED_TRACE(rotates ? "one byte over" : "exactly 1 MiB");
    TempDir dir;
    const std::string earlier(kOneMebibyte - lineBytes + (rotates ? 1 : 0), 'e');
    const auto logFile = dir.Write("launcher.log", earlier);
    const auto previous = dir.Write("launcher.prev.log", "older generation");
    logging::OpenLog(dir.wide(), L"", L"");
    logging::LogInfo(L"rotate", L"probe");

    const std::string now = ReadFileBytes(logFile);
    if (rotates) {
      EXPECT_EQ(ReadFileBytes(previous), earlier);
      EXPECT_EQ(now.size(), lineBytes);
      EXPECT_EQ(MessageOf(SplitLines(now).at(0)), "probe");
    } else {
      EXPECT_EQ(ReadFileBytes(previous), "older generation");
      EXPECT_EQ(now.size(), kOneMebibyte);
      EXPECT_EQ(now.substr(0, earlier.size()), earlier);
    }
  }
}

TEST_F(LogFile, EmptiesTheLogWhenThePreviousGenerationCannotBeReplaced) {
  // A non-empty folder can neither be deleted nor renamed over.
  dir_.Write("launcher.prev.log/keep", "x");
  dir_.Write("launcher.log", std::string(kOneMebibyte, 'e'));
  logging::LogWarning(L"rotate", L"first");
  logging::LogWarning(L"rotate", L"second");

  const std::vector<std::string> lines = Lines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(MessageOf(lines[0]), "first");
  EXPECT_EQ(MessageOf(lines[1]), "second");
  EXPECT_EQ(ReadFileBytes(PreviousPath() / "keep"), "x");
}

TEST_F(LogFile, WritesNothingWhileTheDirectoryIsEmpty) {
  // A log without a folder must not fall back to the working folder.
  const auto savedWorkingDir = std::filesystem::current_path();
  std::filesystem::current_path(dir_.path());
  logging::OpenLog(L"", L"", L"");
  logging::LogError(L"start", L"dropped");
  std::filesystem::current_path(savedWorkingDir);
  EXPECT_TRUE(std::filesystem::is_empty(dir_.path()));
}

TEST_F(LogFile, ConcurrentWritersProduceWholeLinesAndRotateOnce) {
  constexpr int kThreads = 8;
  constexpr int kLinesPerThread = 200;
  const std::string padding(120, 'p');
  // Close enough to the limit that the file rotates while the writers run.
  const std::string earlier = std::string(kOneMebibyte - 20'000, 'e') + "\n";
  dir_.Write("launcher.log", earlier);
  {
    std::vector<std::jthread> writers;
    for (int t = 0; t < kThreads; ++t) {
      writers.emplace_back([t, &padding] {
        for (int n = 0; n < kLinesPerThread; ++n) {
          logging::LogInfo(L"thread", text::Utf8ToWide(std::to_string(t) + ":" + std::to_string(n) + ":" + padding));
        }
      });
    }
  }
  std::vector<std::string> lines = SplitLines(ReadFileBytes(PreviousPath()));
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.front() + "\n", earlier);
  lines.erase(lines.begin());
  for (std::string& line : Lines()) lines.push_back(std::move(line));

  std::set<std::string> seen;
  for (const std::string& line : lines) {
    const std::string message = MessageOf(line);
    ASSERT_TRUE(message.ends_with(padding)) << line;
    EXPECT_TRUE(seen.insert(message).second) << "twice: " << line;
  }
  EXPECT_EQ(seen.size(), static_cast<std::size_t>(kThreads * kLinesPerThread));
}

}  // namespace
