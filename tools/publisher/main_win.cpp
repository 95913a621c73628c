#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdio>

#include "tools/publisher/commands.h"

int wmain(int argc, wchar_t** argv) {
  // The output is UTF-8 with LF line ends, byte for byte as on Linux.
  ::SetConsoleOutputCP(CP_UTF8);
  _setmode(_fileno(stdout), _O_BINARY);
  _setmode(_fileno(stderr), _O_BINARY);
  publisher::Arguments arguments;
  for (int i = 1; i < argc; ++i) arguments.emplace_back(argv[i]);
  return publisher::RunPublisher(arguments);
}
