#pragma once
// The publisher's output: results on standard output, problems on standard
// error, both as UTF-8 whatever the console's code page.

#include <string_view>

namespace publisher {

// Exit statuses of every command.
inline constexpr int kExitSuccess = 0;
inline constexpr int kExitFailure = 1;
inline constexpr int kExitUsage = 2;

// Each writes the text and a line end.
void PrintLine(std::wstring_view text);
void PrintError(std::wstring_view text);

}  // namespace publisher
