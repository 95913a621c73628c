// Windows entry: the wide command line, so non-ASCII folder names survive.
#include <string>
#include <vector>

#include "tools/client/client_main.h"

int wmain(int argc, wchar_t** argv) {
  std::vector<std::wstring> arguments(argv + 1, argv + argc);
  return client::RunClient(arguments);
}
