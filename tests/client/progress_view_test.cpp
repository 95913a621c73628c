#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "text/utf.h"
#include "tools/client/progress_view.h"

namespace client {
namespace {

patch::SPatchProgress Downloading(std::uint64_t done, std::uint64_t total, double speedMbps) {
  patch::SPatchProgress progress;
  progress.phase = 4;
  progress.status = L"Downloading";
  progress.bytesDone = done;
  progress.bytesTotal = total;
  progress.fraction = total == 0 ? 0.0f : static_cast<float>(done) / static_cast<float>(total);
  progress.filesDone = 3;
  progress.filesTotal = 10;
  progress.speedMbps = speedMbps;
  return progress;
}

patch::SPatchProgress Stage(std::uint32_t phase, std::wstring status) {
  patch::SPatchProgress progress;
  progress.phase = phase;
  progress.status = std::move(status);
  return progress;
}

TEST(ProgressView, ByteCountsAndDurations) {
  const std::pair<std::uint64_t, std::string> sizes[] = {
      {0, "0 B"},
      {1023, "1023 B"},
      {1024, "1.00 KiB"},
      {1536, "1.50 KiB"},
      {10 * 1024 * 1024, "10.0 MiB"},
      {5ull << 30, "5.00 GiB"},
      {3ull << 50, "3072.0 TiB"},
  };
  for (const auto& [bytes, text] : sizes) EXPECT_EQ(FormatByteCount(bytes), text) << bytes;

  const std::pair<std::uint64_t, std::string> durations[] = {
      {0, "0:00"}, {7, "0:07"}, {60, "1:00"}, {754, "12:34"}, {3600, "1:00:00"}, {3723, "1:02:03"},
  };
  for (const auto& [seconds, text] : durations) EXPECT_EQ(FormatDuration(seconds), text) << seconds;
}

TEST(ProgressView, TimeLeftFollowsTheReportedSpeed) {
  // 8 Mbit/s is 1,000,000 bytes a second.
  EXPECT_EQ(RemainingSeconds(Downloading(500'000, 3'000'000, 8.0)), 3u);
  EXPECT_EQ(RemainingSeconds(Downloading(500'001, 3'000'000, 8.0)), 3u);
  EXPECT_EQ(RemainingSeconds(Downloading(0, 3'000'001, 8.0)), 4u);
  EXPECT_EQ(RemainingSeconds(Downloading(5, 3, 8.0)), 0u);
  EXPECT_FALSE(RemainingSeconds(Downloading(1, 3, 0.0)).has_value());
}

TEST(ProgressView, BarLineShowsShareSpeedAndTimeLeftWithinTheWidth) {
  const std::string line = ProgressBarLine(Downloading(1'000'000, 2'000'000, 8.0), 200);
  EXPECT_EQ(line.size(), 199u);
  EXPECT_EQ(line.find("Downloading [########--------] 50%  976.6 KiB/s  ETA 0:01  976.6 KiB/1.91 MiB  3/10 files  "),
            0u)
      << line;

  EXPECT_NE(ProgressBarLine(Downloading(0, 10, 0.0), 200).find("ETA --:--"), std::string::npos);
  EXPECT_EQ(ProgressBarLine(Downloading(0, 10, 0.0), 30).size(), 29u);
}

TEST(ProgressView, BarLineCutsNonAsciiNamesAtACharacterBoundary) {
  patch::SPatchProgress progress = Stage(1, L"Preparing patch");
  progress.filesDone = 1;
  progress.filesTotal = 2;
  progress.file = L"maps/\u00e9t\u00e9/\u0634\u0645\u0633.map";
  const std::string full = ProgressBarLine(progress, 80);
  EXPECT_EQ(text::Utf8ToWide(full).substr(0, 38), L"Preparing patch  1/2  maps/\u00e9t\u00e9/\u0634\u0645\u0633.map");
  for (int columns = 20; columns < 40; ++columns) {
    const std::wstring cut = text::Utf8ToWide(ProgressBarLine(progress, columns));
    ASSERT_EQ(cut.size(), static_cast<std::size_t>(columns - 1)) << columns;  // valid UTF-8 all the way
  }
}

TEST(ProgressView, JsonLineCarriesEveryFigure) {
  patch::SPatchProgress progress = Downloading(250, 1000, 0.0);
  progress.file = L"a \"b\"/\u00e9.bin";
  EXPECT_EQ(ProgressJsonLine(progress),
            R"({"event":"progress","phase":4,"status":"Downloading","file":"a \"b\"/)"
            "\xC3\xA9"
            R"(.bin","fraction":0.25,"bytesDone":250,"bytesTotal":1000,"filesDone":3,"filesTotal":10,)"
            R"("speedMbps":0,"etaSeconds":null})");
  // The speed keeps one decimal; the time left is rounded up.
  EXPECT_EQ(ProgressJsonLine(Downloading(0, 2'000'000, 12.3456)),
            R"({"event":"progress","phase":4,"status":"Downloading","file":"","fraction":0,"bytesDone":0,)"
            R"("bytesTotal":2000000,"filesDone":3,"filesTotal":10,"speedMbps":12.3,"etaSeconds":2})");
}

struct SCapture {
  std::vector<std::string> writes;
  CProgressView::Writer Writer() {
    return [this](std::string_view text) { writes.emplace_back(text); };
  }
};

TEST(ProgressView, PlainLinesNameEachStageOnce) {
  SCapture capture;
  CProgressView view(EOutputMode::PlainLines, 80, capture.Writer());
  view.Show(Stage(1, L"Preparing patch"));
  view.Show(Stage(1, L"Preparing patch"));
  for (int blob = 0; blob < 3; ++blob) {
    view.Show(Downloading(blob, 2048, 1.0));
    view.Show(Stage(5, L"Applying files"));
  }
  view.Finish();
  EXPECT_EQ(capture.writes,
            (std::vector<std::string>{"Preparing patch\n", "Downloading: 2.00 KiB to fetch\n", "Applying files\n"}));
}

TEST(ProgressView, JsonAndBarModesNeverDropTheFirstReportOfAStageOrTheLastAndEndTheBarOnce) {
  for (const EOutputMode mode : {EOutputMode::JsonLines, EOutputMode::TerminalBar}) {
    SCapture capture;
    CProgressView view(mode, 80, capture.Writer());
    view.Finish();  // no bar open: nothing to end
    view.Show(Stage(1, L"Preparing patch"));
    view.Show(Downloading(1, 100, 1.0));
    view.Show(Downloading(2, 100, 1.0));  // within the redraw interval: thinned out
    view.Show(Stage(5, L"Applying files"));
    view.Show(Downloading(100, 100, 1.0));
    view.Finish();
    view.Finish();
    std::string all;
    for (const std::string& write : capture.writes) all += write;
    const std::size_t expectedWrites = mode == EOutputMode::TerminalBar ? 5 : 4;  // the bar ends with "\n"
    ASSERT_EQ(capture.writes.size(), expectedWrites) << all;
    EXPECT_NE(capture.writes[1].find("Downloading"), std::string::npos);
    EXPECT_NE(capture.writes[2].find("Applying files"), std::string::npos);
    if (mode == EOutputMode::TerminalBar) {
      EXPECT_NE(capture.writes[3].find("100%"), std::string::npos) << all;
      EXPECT_EQ(capture.writes[0].front(), '\r');
      EXPECT_EQ(capture.writes.back(), "\n");
    } else {
      EXPECT_NE(capture.writes[3].find("\"fraction\":1"), std::string::npos) << all;
    }
  }
}

}  // namespace
}  // namespace client
