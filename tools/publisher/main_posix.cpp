#include "text/utf.h"
#include "tools/publisher/commands.h"

int main(int argc, char** argv) {
  publisher::Arguments arguments;
  for (int i = 1; i < argc; ++i) arguments.push_back(text::Utf8ToWide(argv[i]));
  return publisher::RunPublisher(arguments);
}
