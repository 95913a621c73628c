#pragma once
// The OS part of starting the game; game_launch.cpp holds the rest.

#include <cstdint>
#include <string>
#include <vector>

struct SStartAttempt {
  std::wstring method;
  std::uint32_t errorCode = 0;
};

// Tries this system's ways of starting the executable, in order, until one
// works. Each failed way is added to `failures` with its OS error code.
bool StartGameExecutable(const std::wstring& executablePath, const std::wstring& workingDirectory,
                         std::vector<SStartAttempt>& failures);

// The system's raw message for an error code; empty when it has none.
std::wstring RawSystemMessage(std::uint32_t code);

// A line for a debugger watching the launcher (OutputDebugStringW / stderr).
void WriteDebuggerOutput(const std::wstring& text);
