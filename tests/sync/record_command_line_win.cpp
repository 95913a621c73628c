// Stands in for a new launcher in the self-update tests: writes the command
// line it was started with to "command_line.txt" in its working folder and
// exits. File: "raw:" + the whole command line, then "arg:" + each argument
// after the program name, UTF-8, one per line.
#include <windows.h>

#include <fstream>

#include "text/utf.h"

int wmain(int argc, wchar_t** argv) {
  // Written under another name and renamed, so a reader never sees half a record.
  {
    std::ofstream out("command_line.tmp", std::ios::binary | std::ios::trunc);
    out << "raw:" << text::WideToUtf8(GetCommandLineW()) << "\n";
    for (int i = 1; i < argc; ++i) out << "arg:" << text::WideToUtf8(argv[i]) << "\n";
  }
  return MoveFileExW(L"command_line.tmp", L"command_line.txt", MOVEFILE_REPLACE_EXISTING) ? 0 : 1;
}
