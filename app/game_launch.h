#pragma once
// Starting the game client, and telling whether one is running (patching,
// repair and orphan removal wait for it to close, since they would change
// its files under it).

#include <cstdint>
#include <string>

#include "app/launcher_config.h"

// Finds the game executable (GameExecutablePath), writes any missing default
// settings files beside it, reporting each on the debugger output, and
// starts it. False with a user-readable `error` when the executable is
// missing or cannot be started; seeding failures never stop the launch.
// A file-system failure other than "not found" while looking for the
// executable is thrown as std::filesystem::filesystem_error ("exists").
bool LaunchGame(std::wstring& error, const LauncherConfig& config = CompiledLauncherConfig());

// The same steps for the play command and the start after a patch, with the
// seeding reported in the log instead.
bool PrepareGameLaunch(std::wstring& errorText, const LauncherConfig& config = CompiledLauncherConfig());

// Starts one process of the executable, with no arguments, in its own folder.
// The launcher neither waits for nor watches it. When every way of starting
// it fails, `error` says which and why, and the text is logged ("play").
bool StartGameProcess(const std::wstring& executablePath, std::wstring& error);

// True when no process named like the game executable runs, wherever it was
// started from. False with `runningName` set to that name when one does. A
// process list that cannot be read counts as "not running", so the check
// never blocks work because of its own failure; `error` stays empty.
bool IsGameNotRunning(std::wstring& runningName, std::wstring& error,
                      const LauncherConfig& config = CompiledLauncherConfig());

// The system's message for an OS error code (FormatMessageW / strerror),
// for example "Access is denied (5)"; empty for 0.
std::wstring FormatWindowsError(std::uint32_t code);

// The rule behind FormatWindowsError, given the system's raw message (empty
// when it has none): trailing CR, LF, blanks and full stops dropped, then
// " (" + code + ")" appended; "Windows error " + code when nothing is left.
std::wstring FormatSystemMessage(std::uint32_t code, std::wstring message);
