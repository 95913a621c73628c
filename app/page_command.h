#pragma once
// The commands the page sends: one small JSON object naming an action, with a
// string argument for two of them. Anything that is not exactly such an
// object is refused; the page never learns why.

#include <cstddef>
#include <string>
#include <string_view>

// Values are fixed: logs and tests refer to them by number.
enum class EBridgeCommand {
  None = 0,
  Minimize = 1,
  Close = 2,
  ToggleSettings = 3,
  Patch = 4,
  Play = 5,
  PlayMulti = 6,
  Repair = 7,
  RemoveOrphans = 8,
  Refresh = 9,
  LanguageEN = 10,
  LanguageAR = 11,
  OpenExternal = 12,
  StartDrag = 13,
  StartResize = 14,
  OpenLog = 15,
};

// Longer messages are refused before they are read.
inline constexpr std::size_t kMaxCommandBytes = 8192;

struct SBridgeRequest {
  EBridgeCommand command = EBridgeCommand::None;
  std::wstring argument;  // "url" of openExternal, "edge" of startResize; else empty
};

// Reads one message from the page (UTF-8). False when it is empty, too long,
// not UTF-8, not a JSON object, names no known command (names compare exactly)
// or lacks the non-empty string argument its command needs. Other members
// are ignored.
bool ParseBridgeCommand(std::string_view message, SBridgeRequest& request);
