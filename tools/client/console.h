#pragma once
// The client's standard streams: raw UTF-8 bytes out, and whether a person
// is watching standard output (then progress is drawn as a redrawn bar).

#include <string_view>

namespace client {

// Called once before anything is written: standard output and error take
// UTF-8 bytes unchanged ("\n" stays "\n" so JSON lines are the same bytes on
// every system).
void PrepareConsole();
bool IsStandardOutputTerminal();
// Width of the terminal in columns; 80 when unknown.
int TerminalColumns();

void WriteStandardOutput(std::string_view utf8);
void WriteStandardError(std::string_view utf8);

}  // namespace client
