#include <charconv>
#include <string>
#include <system_error>

#include "text/json.h"
#include "text/utf.h"

namespace text {
namespace {

// The top-level value is level 1; bounding the levels bounds the recursion.
constexpr int kMaxDepth = 16;

int HexDigitValue(wchar_t c) {
  if (c >= L'0' && c <= L'9') return c - L'0';
  if (c >= L'a' && c <= L'f') return c - L'a' + 10;
  if (c >= L'A' && c <= L'F') return c - L'A' + 10;
  return -1;
}

bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

// The span has passed the number grammar, so it is ASCII and narrowing it is
// exact. from_chars behaves the same on both targets, unlike the C runtimes'
// strtod, and reports out-of-range values (including underflow to zero).
bool ConvertNumber(std::wstring_view span, double& out) {
  char small[64];
  std::string large;
  char* first = small;
  if (span.size() > sizeof small) {
    large.resize(span.size());
    first = large.data();
  }
  for (std::size_t i = 0; i < span.size(); ++i) first[i] = static_cast<char>(span[i]);
  const char* last = first + span.size();
  const auto result = std::from_chars(first, last, out);
  return result.ec == std::errc() && result.ptr == last;
}

// One pass of recursive descent over the wide text, with a cursor.
class CJsonParser {
 public:
  explicit CJsonParser(std::wstring_view text) : text_(text) {}

  bool ParseDocument(CJsonValue& out) {
    if (!ParseValue(1, out)) return false;
    SkipWhitespace();
    return AtEnd();
  }

 private:
  bool AtEnd() const { return pos_ >= text_.size(); }
  bool NextIs(wchar_t c) const { return !AtEnd() && text_[pos_] == c; }
  bool NextIsDigit() const { return !AtEnd() && IsDigit(text_[pos_]); }

  bool Consume(wchar_t c) {
    if (!NextIs(c)) return false;
    ++pos_;
    return true;
  }

  void SkipWhitespace() {
    while (NextIs(L' ') || NextIs(L'\t') || NextIs(L'\n') || NextIs(L'\r')) ++pos_;
  }

  // Returns whether at least one digit was consumed.
  bool ConsumeDigits() {
    const std::size_t start = pos_;
    while (NextIsDigit()) ++pos_;
    return pos_ > start;
  }

  bool ParseValue(int depth, CJsonValue& out) {
    if (depth > kMaxDepth) return false;
    SkipWhitespace();
    if (AtEnd()) return false;
    switch (text_[pos_]) {
      case L'"': {
        std::wstring value;
        if (!ParseString(value)) return false;
        out = CJsonValue(std::move(value));
        return true;
      }
      case L'[': return ParseArray(depth, out);
      case L'{': return ParseObject(depth, out);
      case L't': return ParseLiteral(L"true", CJsonValue(true), out);
      case L'f': return ParseLiteral(L"false", CJsonValue(false), out);
      case L'n': return ParseLiteral(L"null", CJsonValue(), out);
      default: return ParseNumber(out);
    }
  }

  bool ParseLiteral(std::wstring_view literal, CJsonValue value, CJsonValue& out) {
    if (!text_.substr(pos_).starts_with(literal)) return false;
    pos_ += literal.size();
    out = std::move(value);
    return true;
  }

  // Optional '-', then '0' or a non-zero digit and more digits, an optional
  // fraction and an optional exponent, each with at least one digit.
  bool ParseNumber(CJsonValue& out) {
    const std::size_t start = pos_;
    Consume(L'-');
    if (!Consume(L'0') && !ConsumeDigits()) return false;
    if (Consume(L'.') && !ConsumeDigits()) return false;
    if (Consume(L'e') || Consume(L'E')) {
      if (!Consume(L'+')) Consume(L'-');
      if (!ConsumeDigits()) return false;
    }
    double value = 0.0;
    if (!ConvertNumber(text_.substr(start, pos_ - start), value)) return false;
    out = CJsonValue(value);
    return true;
  }

  bool ParseString(std::wstring& out) {
    if (!Consume(L'"')) return false;
    std::size_t run_start = pos_;
    while (!AtEnd()) {
      const wchar_t c = text_[pos_];
      if (c != L'"' && c != L'\\') {
        ++pos_;
        continue;
      }
      out.append(text_.substr(run_start, pos_ - run_start));
      ++pos_;
      if (c == L'"') return true;
      if (!ParseEscape(out)) return false;
      run_start = pos_;
    }
    return false;  // the text ended before the closing quote
  }

  // The cursor is just past the backslash.
  bool ParseEscape(std::wstring& out) {
    if (AtEnd()) return false;
    const wchar_t c = text_[pos_++];
    switch (c) {
      case L'"':
      case L'/':
      case L'\\': out.push_back(c); return true;
      case L'b': out.push_back(L'\b'); return true;
      case L'f': out.push_back(L'\f'); return true;
      case L'n': out.push_back(L'\n'); return true;
      case L'r': out.push_back(L'\r'); return true;
      case L't': out.push_back(L'\t'); return true;
      case L'u': return ParseUnicodeEscape(out);
      default: return false;
    }
  }

  // Exactly four hexadecimal digits give one UTF-16 code unit; surrogates are
  // neither paired up nor checked here.
  bool ParseUnicodeEscape(std::wstring& out) {
    if (text_.size() - pos_ < 4) return false;
    unsigned unit = 0;
    for (int i = 0; i < 4; ++i) {
      const int digit = HexDigitValue(text_[pos_++]);
      if (digit < 0) return false;
      unit = (unit << 4) | static_cast<unsigned>(digit);
    }
    AppendUtf16Unit(out, static_cast<char16_t>(unit));
    return true;
  }

  bool ParseArray(int depth, CJsonValue& out) {
    ++pos_;  // '['
    CJsonArray& elements = out.ResetToArray();
    SkipWhitespace();
    if (Consume(L']')) return true;
    do {
      if (!ParseValue(depth + 1, elements.emplace_back())) return false;
      SkipWhitespace();
    } while (Consume(L','));
    return Consume(L']');
  }

  bool ParseObject(int depth, CJsonValue& out) {
    ++pos_;  // '{'
    CJsonObject& members = out.ResetToObject();
    SkipWhitespace();
    if (Consume(L'}')) return true;
    do {
      SkipWhitespace();
      std::wstring key;
      if (!ParseString(key)) return false;
      SkipWhitespace();
      if (!Consume(L':')) return false;
      // The first occurrence of a key wins; a repeat is parsed, then dropped.
      const auto [member, inserted] = members.try_emplace(std::move(key));
      CJsonValue repeat;
      if (!ParseValue(depth + 1, inserted ? member->second : repeat)) return false;
      SkipWhitespace();
    } while (Consume(L','));
    return Consume(L'}');
  }

  std::wstring_view text_;
  std::size_t pos_ = 0;
};

}  // namespace

bool ParseJson(std::wstring_view text, CJsonValue& out) {
  CJsonValue value;
  if (!CJsonParser(text).ParseDocument(value)) {
    out = CJsonValue();
    return false;
  }
  out = std::move(value);
  return true;
}

}  // namespace text
