#include "platform/process_start.h"

namespace platform {
namespace {

bool IsBareWord(const std::wstring& argument) {
  if (argument.empty()) return false;
  for (const wchar_t c : argument) {
    const bool plain = (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') || (c >= L'0' && c <= L'9') ||
                       c == L'-' || c == L'_' || c == L'.' || c == L'=';
    if (!plain) return false;
  }
  return true;
}

// Backslashes count as escapes only when a quote follows them, so only
// those runs (and the run before the closing quote) are doubled.
void AppendQuoted(std::wstring& line, const std::wstring& argument) {
  line += L'"';
  std::size_t backslashes = 0;
  for (const wchar_t c : argument) {
    if (c == L'\\') {
      ++backslashes;
      continue;
    }
    if (c == L'"') {
      line.append(backslashes * 2 + 1, L'\\');
    } else {
      line.append(backslashes, L'\\');
    }
    backslashes = 0;
    line += c;
  }
  line.append(backslashes * 2, L'\\');
  line += L'"';
}

}  // namespace

std::wstring ComposeCommandLine(const std::wstring& executable, const std::vector<std::wstring>& arguments) {
  // The program name is read up to the next quote, without escapes, so it is
  // always quoted as it is.
  std::wstring line = L"\"" + executable + L"\"";
  for (const std::wstring& argument : arguments) {
    line += L' ';
    if (IsBareWord(argument)) {
      line += argument;
    } else {
      AppendQuoted(line, argument);
    }
  }
  return line;
}

}  // namespace platform
