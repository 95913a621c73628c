#pragma once
// Where the client's words go: text for a person (or a log), or one JSON
// object per line for a script. Failure sentences always reach standard
// error as well, so a script that ignores standard output still sees them.

#include <string>
#include <string_view>

#include "tools/client/progress_view.h"

namespace client {

class CClientOutput {
 public:
  using Writer = CProgressView::Writer;

  CClientOutput(EOutputMode mode, int columns, Writer standardOutput, Writer standardError);

  bool IsJson() const { return mode_ == EOutputMode::JsonLines; }
  CProgressView& Progress() { return progress_; }

  // A line for a person; dropped in JSON mode.
  void Text(std::string_view utf8Line);
  // The command's closing record; written only in JSON mode.
  void Record(std::string_view jsonObject);
  // One failure sentence on standard error, in every mode.
  void Problem(std::wstring_view sentence);

 private:
  EOutputMode mode_;
  Writer out_;
  Writer err_;
  CProgressView progress_;
};

}  // namespace client
