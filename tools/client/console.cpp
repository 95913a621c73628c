#include "tools/client/console.h"

#include <cstdio>

namespace client {
namespace {

// Flushed at once so progress and JSON lines reach a pipe as they happen.
void WriteAll(std::FILE* stream, std::string_view utf8) {
  std::fwrite(utf8.data(), 1, utf8.size(), stream);
  std::fflush(stream);
}

}  // namespace

void WriteStandardOutput(std::string_view utf8) { WriteAll(stdout, utf8); }
void WriteStandardError(std::string_view utf8) { WriteAll(stderr, utf8); }

}  // namespace client
