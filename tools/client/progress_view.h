#pragma once
// How the client shows a patch run while it works: a bar redrawn in place on
// a terminal (speed and time left), one line per stage when the output is a
// file or pipe, or one JSON object per line with --json.

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "patch/patch_progress.h"

namespace client {

enum class EOutputMode { TerminalBar, PlainLines, JsonLines };

// "512 B", "12.3 KiB", "4.0 MiB", "1.25 GiB".
std::string FormatByteCount(std::uint64_t bytes);
// "0:07", "12:34", "1:02:03".
std::string FormatDuration(std::uint64_t seconds);
// Seconds until `progress` is complete at its reported speed; none while the
// speed is still unknown.
std::optional<std::uint64_t> RemainingSeconds(const patch::SPatchProgress& progress);

// One terminal line, at most `columns` - 1 characters so it never wraps.
std::string ProgressBarLine(const patch::SPatchProgress& progress, int columns);
// {"event":"progress",...} without the line break.
std::string ProgressJsonLine(const patch::SPatchProgress& progress);

class CProgressView {
 public:
  using Writer = std::function<void(std::string_view utf8)>;

  CProgressView(EOutputMode mode, int columns, Writer write);

  // Reports arrive from the engine one at a time; after the first of each
  // stage they are thinned to a few per second.
  void Show(const patch::SPatchProgress& progress);
  // Ends a bar left open on the terminal; call before printing anything else.
  void Finish();

 private:
  bool ShouldDraw(const patch::SPatchProgress& progress);

  EOutputMode mode_;
  int columns_;
  Writer write_;
  std::chrono::steady_clock::time_point lastDraw_{};
  bool barOpen_ = false;
  std::set<std::wstring> statusesAnnounced_;
};

}  // namespace client
