#include <charconv>
#include <cmath>

#include "text/json.h"
#include "text/utf.h"

namespace text {
namespace {

// Escape for one UTF-8 byte, or nullptr when the byte is written as it is.
const char* ShortEscape(unsigned char byte) {
  switch (byte) {
    case 0x08: return "\\b";
    case 0x09: return "\\t";
    case 0x0A: return "\\n";
    case 0x0C: return "\\f";
    case 0x0D: return "\\r";
    case '"': return "\\\"";
    case '\\': return "\\\\";
    default: return nullptr;
  }
}

template <typename Integer>
void AppendInteger(std::string& out, Integer value) {
  char buffer[24];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  out.append(buffer, result.ptr);
}

}  // namespace

void AppendJsonEscaped(std::string& out, std::wstring_view text) {
  static constexpr char kHexDigits[] = "0123456789ABCDEF";
  const std::string utf8 = WideToUtf8(text);
  out.reserve(out.size() + utf8.size());
  std::size_t run_start = 0;
  for (std::size_t i = 0; i < utf8.size(); ++i) {
    const auto byte = static_cast<unsigned char>(utf8[i]);
    const char* escape = ShortEscape(byte);
    if (escape == nullptr && byte >= 0x20) continue;
    out.append(utf8, run_start, i - run_start);
    run_start = i + 1;
    if (escape != nullptr) {
      out += escape;
    } else {
      out += "\\u00";
      out += kHexDigits[byte >> 4];
      out += kHexDigits[byte & 0x0F];
    }
  }
  out.append(utf8, run_start, std::string::npos);
}

void AppendJsonFraction(std::string& out, float value) {
  if (!std::isfinite(value)) value = 0.0f;
  // Fixed format without a precision gives the shortest form that reads back
  // exactly, in plain notation, so tiny or huge values stay valid JSON; the
  // longest, the negative smallest subnormal, needs 48 characters.
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed);
  out.append(buffer, result.ptr);
}

void AppendJsonCount(std::string& out, std::uint64_t value) { AppendInteger(out, value); }

void AppendJsonInt(std::string& out, std::int32_t value) { AppendInteger(out, value); }

void AppendJsonKey(std::string& out, std::string_view key) {
  if (!out.empty() && out.back() != '{' && out.back() != '[') out += ',';
  out += '"';
  out += key;
  out += "\":";
}

}  // namespace text
