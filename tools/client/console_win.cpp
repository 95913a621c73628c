#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdio>

#include "tools/client/console.h"

namespace client {
namespace {

constexpr int kDefaultColumns = 80;

}  // namespace

void PrepareConsole() {
  // The console shows the UTF-8 bytes as text; binary mode keeps "\n" unchanged.
  SetConsoleOutputCP(CP_UTF8);
  _setmode(_fileno(stdout), _O_BINARY);
  _setmode(_fileno(stderr), _O_BINARY);
}

bool IsStandardOutputTerminal() { return _isatty(_fileno(stdout)) != 0; }

int TerminalColumns() {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info)) {
    const int columns = info.srWindow.Right - info.srWindow.Left + 1;
    if (columns > 0) return columns;
  }
  return kDefaultColumns;
}

}  // namespace client
