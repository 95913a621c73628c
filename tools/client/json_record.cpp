#include "tools/client/json_record.h"

#include "text/json.h"

namespace client {
namespace {

void AppendQuoted(std::string& out, std::wstring_view value) {
  out += '"';
  text::AppendJsonEscaped(out, value);
  out += '"';
}

}  // namespace

CJsonRecord::CJsonRecord(std::string_view event) : out_("{") {
  text::AppendJsonKey(out_, "event");
  out_ += '"';
  out_ += event;
  out_ += '"';
}

CJsonRecord& CJsonRecord::AddCount(std::string_view key, std::uint64_t value) {
  text::AppendJsonKey(out_, key);
  text::AppendJsonCount(out_, value);
  return *this;
}

CJsonRecord& CJsonRecord::AddFlag(std::string_view key, bool value) {
  text::AppendJsonKey(out_, key);
  out_ += value ? "true" : "false";
  return *this;
}

CJsonRecord& CJsonRecord::AddFraction(std::string_view key, float value) {
  text::AppendJsonKey(out_, key);
  text::AppendJsonFraction(out_, value);
  return *this;
}

CJsonRecord& CJsonRecord::AddText(std::string_view key, std::wstring_view value) {
  text::AppendJsonKey(out_, key);
  AppendQuoted(out_, value);
  return *this;
}

CJsonRecord& CJsonRecord::AddTextList(std::string_view key, const std::vector<std::wstring>& values) {
  text::AppendJsonKey(out_, key);
  out_ += '[';
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i > 0) out_ += ',';
    AppendQuoted(out_, values[i]);
  }
  out_ += ']';
  return *this;
}

CJsonRecord& CJsonRecord::AddNull(std::string_view key) {
  text::AppendJsonKey(out_, key);
  out_ += "null";
  return *this;
}

}  // namespace client
