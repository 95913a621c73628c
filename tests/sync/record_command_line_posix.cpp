// Stands in for a new launcher in the self-update tests: writes the arguments
// it was started with to "command_line.txt" beside itself and exits.
// File: "arg:" + each argument after the program name, one per line.
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

int main(int argc, char** argv) {
  char self[4096] = {};
  const ssize_t length = readlink("/proc/self/exe", self, sizeof(self) - 1);
  if (length <= 0) return 1;
  const std::string path(self, static_cast<std::size_t>(length));
  const std::string folder = path.substr(0, path.find_last_of('/') + 1);
  std::string record;
  for (int i = 1; i < argc; ++i) record += std::string("arg:") + argv[i] + "\n";
  // Written under another name and renamed, so a reader never sees half a record.
  const std::string partial = folder + "command_line.tmp";
  {
    std::ofstream out(partial, std::ios::binary | std::ios::trunc);
    out << record;
  }
  return std::rename(partial.c_str(), (folder + "command_line.txt").c_str()) == 0 ? 0 : 1;
}
