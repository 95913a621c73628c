#include "tools/client/client_output.h"

#include "text/utf.h"

namespace client {

CClientOutput::CClientOutput(EOutputMode mode, int columns, Writer standardOutput, Writer standardError)
    : mode_(mode), out_(standardOutput), err_(std::move(standardError)), progress_(mode, columns, std::move(standardOutput)) {}

void CClientOutput::Text(std::string_view utf8Line) {
  if (IsJson()) return;
  progress_.Finish();
  out_(std::string(utf8Line) + "\n");
}

void CClientOutput::Record(std::string_view jsonObject) {
  if (!IsJson()) return;
  out_(std::string(jsonObject) + "\n");
}

void CClientOutput::Problem(std::wstring_view sentence) {
  progress_.Finish();
  err_(text::WideToUtf8(sentence) + "\n");
}

}  // namespace client
