#pragma once
// The launcher's own small JSON facility: a dynamic value, a strict parser over
// wide text, and writer primitives that producers use to assemble their output
// by hand in a fixed key order (there is deliberately no generic writer).

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

namespace text {

// Numbered as the kinds are numbered in the value's storage; do not reorder.
enum class EJsonKind { Null = 0, Boolean = 1, Number = 2, String = 3, Array = 4, Object = 5 };

class CJsonValue;

// Lets Find() look a key up by std::wstring_view without building a string.
struct SJsonKeyHash {
  using is_transparent = void;
  std::size_t operator()(std::wstring_view key) const noexcept { return std::hash<std::wstring_view>{}(key); }
};

using CJsonArray = std::vector<CJsonValue>;
// Member order of the text is not kept.
using CJsonObject = std::unordered_map<std::wstring, CJsonValue, SJsonKeyHash, std::equal_to<>>;

class CJsonValue {
 public:
  CJsonValue() = default;  // null
  // Constrained so that a pointer or an integer never silently becomes a boolean.
  template <std::same_as<bool> B>
  explicit CJsonValue(B value) : data_(value) {}
  explicit CJsonValue(double value) : data_(value) {}
  explicit CJsonValue(std::wstring value) : data_(std::move(value)) {}

  EJsonKind Kind() const { return static_cast<EJsonKind>(data_.index()); }
  bool IsNull() const { return Kind() == EJsonKind::Null; }
  bool IsBool() const { return Kind() == EJsonKind::Boolean; }
  bool IsNumber() const { return Kind() == EJsonKind::Number; }
  bool IsString() const { return Kind() == EJsonKind::String; }
  bool IsArray() const { return Kind() == EJsonKind::Array; }
  bool IsObject() const { return Kind() == EJsonKind::Object; }

  // Precondition for each: the kind matches. A mismatch is a programming
  // error and throws std::bad_variant_access; readers test the kind first.
  bool AsBool() const { return std::get<bool>(data_); }
  double AsNumber() const { return std::get<double>(data_); }
  const std::wstring& AsString() const { return std::get<std::wstring>(data_); }
  const CJsonArray& AsArray() const { return std::get<CJsonArray>(data_); }
  const CJsonObject& AsObject() const { return std::get<CJsonObject>(data_); }

  // Turn this value into an empty array or object and return it for filling
  // in place, so children are never moved after they are built.
  CJsonArray& ResetToArray() { return data_.emplace<CJsonArray>(); }
  CJsonObject& ResetToObject() { return data_.emplace<CJsonObject>(); }

  // Exact, case-sensitive lookup; nullptr when the key is absent or this is
  // not an object.
  const CJsonValue* Find(std::wstring_view key) const;

 private:
  std::variant<std::monostate, bool, double, std::wstring, CJsonArray, CJsonObject> data_;
};

// Strict parse of a whole document. Every fault (bad token or escape, nesting
// deeper than 16 levels, trailing data, a number out of the double range,
// premature end) gives false and leaves `out` null; never throws for bad text.
bool ParseJson(std::wstring_view text, CJsonValue& out);

// Writer primitives; each appends UTF-8 to `out` and writes no whitespace.

// The text's UTF-8 form with quote, backslash and control bytes escaped;
// without the surrounding quotes. Non-ASCII stays raw UTF-8 and '/' is kept.
void AppendJsonEscaped(std::string& out, std::wstring_view text);
// Shortest plain decimal that reads back as the same float ("0", "0.5", "1");
// NaN and infinities are written as "0".
void AppendJsonFraction(std::string& out, float value);
void AppendJsonCount(std::string& out, std::uint64_t value);
void AppendJsonInt(std::string& out, std::int32_t value);
// Writes ',' unless the output is empty or its last byte is '{' or '[', then
// "key": . The key is a fixed ASCII name and is written unescaped.
void AppendJsonKey(std::string& out, std::string_view key);

}  // namespace text
