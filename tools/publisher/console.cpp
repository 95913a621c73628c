#include "tools/publisher/console.h"

#include <cstdio>
#include <string>

#include "text/utf.h"

namespace publisher {
namespace {

void WriteLine(std::FILE* stream, std::wstring_view text) {
  std::string bytes = text::WideToUtf8(text);
  bytes += '\n';
  std::fwrite(bytes.data(), 1, bytes.size(), stream);
  std::fflush(stream);
}

}  // namespace

void PrintLine(std::wstring_view text) { WriteLine(stdout, text); }

void PrintError(std::wstring_view text) { WriteLine(stderr, text); }

}  // namespace publisher
