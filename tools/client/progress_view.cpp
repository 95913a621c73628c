#include "tools/client/progress_view.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "text/utf.h"
#include "tools/client/json_record.h"

namespace client {
namespace {

constexpr std::uint32_t kPhasePreparing = 1;
constexpr std::uint32_t kPhaseDownloading = 4;
constexpr std::uint32_t kPhaseUpToDate = 6;
constexpr auto kRedrawInterval = std::chrono::milliseconds(100);
constexpr int kBarCells = 16;
constexpr double kBytesPerSecondPerMbps = 1'000'000.0 / 8.0;

std::string Printf(const char* format, double value) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, format, value);
  return buffer;
}

std::string Percent(float fraction) {
  const int percent = static_cast<int>(std::clamp(fraction, 0.0f, 1.0f) * 100.0f);
  return std::to_string(percent) + "%";
}

std::string Bar(float fraction) {
  const int filled = static_cast<int>(std::clamp(fraction, 0.0f, 1.0f) * kBarCells);
  std::string bar(1, '[');
  bar.append(filled, '#').append(kBarCells - filled, '-') += ']';
  return bar;
}

double BytesPerSecond(const patch::SPatchProgress& progress) { return progress.speedMbps * kBytesPerSecondPerMbps; }

// Cuts at a code point boundary (a column per code point is close enough for
// file names) and pads, so a shorter line fully covers the previous one.
std::string FitToColumns(const std::string& utf8, int columns) {
  const std::size_t width = static_cast<std::size_t>(std::max(columns - 1, 1));
  std::wstring wide = text::Utf8ToWide(utf8);
  if (wide.size() > width) wide.resize(width);
  wide.append(width - wide.size(), L' ');
  return text::WideToUtf8(wide);
}

std::string FilesFigure(const patch::SPatchProgress& progress) {
  return std::to_string(progress.filesDone) + "/" + std::to_string(progress.filesTotal) + " files";
}

}  // namespace

std::string FormatByteCount(std::uint64_t bytes) {
  static constexpr const char* kUnits[] = {"KiB", "MiB", "GiB", "TiB"};
  if (bytes < 1024) return std::to_string(bytes) + " B";
  double value = static_cast<double>(bytes) / 1024.0;
  std::size_t unit = 0;
  while (value >= 1024.0 && unit + 1 < std::size(kUnits)) {
    value /= 1024.0;
    ++unit;
  }
  return Printf(value < 10.0 ? "%.2f" : "%.1f", value) + " " + kUnits[unit];
}

std::string FormatDuration(std::uint64_t seconds) {
  const std::uint64_t hours = seconds / 3600;
  const std::uint64_t minutes = seconds / 60 % 60;
  const std::uint64_t rest = seconds % 60;
  char buffer[48];
  if (hours > 0) {
    std::snprintf(buffer, sizeof buffer, "%llu:%02llu:%02llu", static_cast<unsigned long long>(hours),
                  static_cast<unsigned long long>(minutes), static_cast<unsigned long long>(rest));
  } else {
    std::snprintf(buffer, sizeof buffer, "%llu:%02llu", static_cast<unsigned long long>(minutes),
                  static_cast<unsigned long long>(rest));
  }
  return buffer;
}

std::optional<std::uint64_t> RemainingSeconds(const patch::SPatchProgress& progress) {
  const double rate = BytesPerSecond(progress);
  if (!(rate > 0.0)) return std::nullopt;
  const std::uint64_t remaining =
      progress.bytesTotal > progress.bytesDone ? progress.bytesTotal - progress.bytesDone : 0;
  return static_cast<std::uint64_t>(std::ceil(static_cast<double>(remaining) / rate));
}

std::string ProgressBarLine(const patch::SPatchProgress& progress, int columns) {
  std::string line = text::WideToUtf8(progress.status);
  if (progress.phase == kPhasePreparing) {
    line += "  " + std::to_string(progress.filesDone) + "/" + std::to_string(progress.filesTotal) + "  " +
            text::WideToUtf8(progress.file);
  } else if (progress.phase != kPhaseUpToDate) {
    const std::optional<std::uint64_t> eta = RemainingSeconds(progress);
    // Most telling first: a narrow terminal cuts the end of the line.
    line += ' ';
    line += Bar(progress.fraction) + " " + Percent(progress.fraction) + "  " +
            FormatByteCount(static_cast<std::uint64_t>(BytesPerSecond(progress))) + "/s  ETA " +
            (eta ? FormatDuration(*eta) : std::string("--:--")) + "  " + FormatByteCount(progress.bytesDone) + "/" +
            FormatByteCount(progress.bytesTotal) + "  " + FilesFigure(progress);
  }
  return FitToColumns(line, columns);
}

std::string ProgressJsonLine(const patch::SPatchProgress& progress) {
  CJsonRecord record("progress");
  record.AddCount("phase", progress.phase)
      .AddText("status", progress.status)
      .AddText("file", progress.file)
      .AddFraction("fraction", progress.fraction)
      .AddCount("bytesDone", progress.bytesDone)
      .AddCount("bytesTotal", progress.bytesTotal)
      .AddCount("filesDone", progress.filesDone)
      .AddCount("filesTotal", progress.filesTotal)
      .AddFraction("speedMbps", static_cast<float>(std::round(progress.speedMbps * 10.0) / 10.0));
  const std::optional<std::uint64_t> eta = RemainingSeconds(progress);
  if (eta) {
    record.AddCount("etaSeconds", *eta);
  } else {
    record.AddNull("etaSeconds");
  }
  return record.Text();
}

CProgressView::CProgressView(EOutputMode mode, int columns, Writer write)
    : mode_(mode), columns_(columns), write_(std::move(write)) {}

void CProgressView::Show(const patch::SPatchProgress& progress) {
  switch (mode_) {
    case EOutputMode::TerminalBar:
      if (!ShouldDraw(progress)) return;
      write_(ProgressBarLine(progress, columns_).insert(0, 1, '\r'));
      barOpen_ = true;
      return;
    case EOutputMode::JsonLines:
      if (!ShouldDraw(progress)) return;
      write_(ProgressJsonLine(progress) + "\n");
      return;
    case EOutputMode::PlainLines:
      // A log wants each stage once.
      if (!statusesAnnounced_.insert(progress.status).second) return;
      write_(text::WideToUtf8(progress.status) +
             (progress.phase == kPhaseDownloading ? ": " + FormatByteCount(progress.bytesTotal) + " to fetch"
                                                  : std::string()) +
             "\n");
      return;
  }
}

void CProgressView::Finish() {
  if (!barOpen_) return;
  write_("\n");
  barOpen_ = false;
}

bool CProgressView::ShouldDraw(const patch::SPatchProgress& progress) {
  const auto now = std::chrono::steady_clock::now();
  // Downloading and applying alternate blob by blob: only the first report of
  // each stage, the completed one and a few a second get through.
  const bool firstOfStage = statusesAnnounced_.insert(progress.status).second;
  const bool complete = progress.fraction >= 1.0f;
  if (!firstOfStage && !complete && now - lastDraw_ < kRedrawInterval) return false;
  lastDraw_ = now;
  return true;
}

}  // namespace client
