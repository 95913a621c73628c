// Stands in for a new launcher in the self-update tests: writes the arguments
// it was started with to "command_line.txt" in its working folder and exits.
// File: "arg:" + each argument after the program name, one per line.
#include <cstdio>
#include <fstream>
#include <string>

int main(int argc, char** argv) {
  // Written under another name and renamed, so a reader never sees half a record.
  {
    std::ofstream out("command_line.tmp", std::ios::binary | std::ios::trunc);
    for (int i = 1; i < argc; ++i) out << "arg:" << argv[i] << "\n";
  }
  return std::rename("command_line.tmp", "command_line.txt") == 0 ? 0 : 1;
}
