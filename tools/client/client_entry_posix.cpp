// Linux entry: arguments arrive as UTF-8 bytes.
#include <string>
#include <vector>

#include "text/utf.h"
#include "tools/client/client_main.h"

int main(int argc, char** argv) {
  std::vector<std::wstring> arguments;
  for (int i = 1; i < argc; ++i) arguments.push_back(text::Utf8ToWide(argv[i]));
  return client::RunClient(arguments);
}
