#include "text/locale_file.h"

#include <fstream>
#include <iterator>
#include <optional>

#include "text/utf.h"

namespace text {
namespace {

class CLocaleReader {
 public:
  explicit CLocaleReader(std::string_view bytes) : bytes_(bytes) {}

  bool ReadObject(StringTable& table) {
    SkipWhitespace();
    if (!Consume('{')) return false;
    SkipWhitespace();
    if (Consume('}')) return true;
    for (;;) {
      std::wstring key;
      std::wstring value;
      if (!ReadString(key)) return false;
      SkipWhitespace();
      if (!Consume(':')) return false;
      SkipWhitespace();
      if (!ReadString(value)) return false;
      table.emplace(std::move(key), std::move(value));
      SkipWhitespace();
      if (Consume('}')) return true;
      if (!Consume(',')) return false;
      SkipWhitespace();
    }
  }

 private:
  void SkipWhitespace() {
    while (pos_ < bytes_.size() &&
           (bytes_[pos_] == ' ' || bytes_[pos_] == '\t' || bytes_[pos_] == '\n' || bytes_[pos_] == '\r')) {
      ++pos_;
    }
  }

  bool Consume(char expected) {
    if (pos_ >= bytes_.size() || bytes_[pos_] != expected) return false;
    ++pos_;
    return true;
  }

  static std::optional<char> SimpleEscape(char c) {
    switch (c) {
      case '"': return '"';
      case '\\': return '\\';
      case '/': return '/';
      case 'b': return '\b';
      case 'f': return '\f';
      case 'n': return '\n';
      case 'r': return '\r';
      case 't': return '\t';
      default: return std::nullopt;
    }
  }

  static int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
  }

  // Four hex digits after "\u", as one UTF-16 code unit in UTF-8 (a lone
  // surrogate becomes U+FFFD).
  bool AppendUnicodeEscape(std::string& utf8) {
    if (bytes_.size() - pos_ < 4) return false;
    unsigned unit = 0;
    for (int i = 0; i < 4; ++i) {
      const int digit = HexValue(bytes_[pos_++]);
      if (digit < 0) return false;
      unit = unit * 16 + static_cast<unsigned>(digit);
    }
    const wchar_t wide = static_cast<wchar_t>(unit);
    utf8 += WideToUtf8(std::wstring_view(&wide, 1));
    return true;
  }

  bool ReadString(std::wstring& out) {
    if (!Consume('"')) return false;
    std::string utf8;
    while (pos_ < bytes_.size()) {
      const char c = bytes_[pos_++];
      if (c == '"') {
        out = Utf8ToWide(utf8);
        return true;
      }
      if (c != '\\') {
        utf8.push_back(c);
        continue;
      }
      if (pos_ >= bytes_.size()) return false;
      const char escape = bytes_[pos_++];
      if (escape == 'u') {
        if (!AppendUnicodeEscape(utf8)) return false;
      } else if (const auto simple = SimpleEscape(escape)) {
        utf8.push_back(*simple);
      } else {
        return false;
      }
    }
    return false;
  }

  std::string_view bytes_;
  size_t pos_ = 0;
};

}  // namespace

bool ParseLocaleObject(std::string_view utf8, StringTable& table) {
  table.clear();
  StringTable parsed;
  if (!CLocaleReader(utf8).ReadObject(parsed)) return false;
  table = std::move(parsed);
  return true;
}

bool LoadLocaleFile(const std::filesystem::path& file, StringTable& table, std::wstring& errorText) {
  table.clear();
  std::ifstream in(file, std::ios::binary);
  if (!in) {
    errorText = L"Could not open locale file.";
    return false;
  }
  const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  if (!ParseLocaleObject(bytes, table)) {
    errorText = L"Locale JSON could not be parsed.";
    return false;
  }
  errorText.clear();
  return true;
}

}  // namespace text
