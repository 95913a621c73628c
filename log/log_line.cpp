#include "log/log_line.h"

#include <cstdio>

#include "text/utf.h"

namespace logging {
namespace {

std::wstring_view LevelTag(ELogLevel level) {
  switch (level) {
    case ELogLevel::Info:
      return L"INFO ";
    case ELogLevel::Warning:
      return L"WARN ";
    default:
      return L"ERROR";
  }
}

void AppendTimestamp(std::wstring& out, const SLocalTime& time) {
  char stamp[80];
  const int length = std::snprintf(stamp, sizeof stamp, "%04u-%02u-%02u %02u:%02u:%02u", time.year, time.month,
                                   time.day, time.hour, time.minute, time.second);
  out.append(stamp, stamp + length);
}

void AppendOnOneLine(std::wstring& out, std::wstring_view message) {
  for (std::size_t i = 0; i < message.size(); ++i) {
    const wchar_t c = message[i];
    if (c != L'\r' && c != L'\n') {
      out += c;
      continue;
    }
    out += L' ';
    if (c == L'\r' && i + 1 < message.size() && message[i + 1] == L'\n') ++i;
  }
}

}  // namespace

std::string FormatLogLine(const SLocalTime& time, ELogLevel level, std::wstring_view category,
                          std::wstring_view message) {
  std::wstring line;
  line.reserve(32 + category.size() + message.size());
  AppendTimestamp(line, time);
  line += L' ';
  line += LevelTag(level);
  line += L" [";
  line += category;
  line += L"] ";
  AppendOnOneLine(line, message);
  std::string utf8 = text::WideToUtf8(line);
  utf8 += '\n';
  return utf8;
}

}  // namespace logging
