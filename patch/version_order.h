#pragma once
// Order of dotted product versions such as "1.0.5", used to decide whether a
// published launcher is newer than the running one.

#include <string_view>

namespace patch {

// True only when both texts are one to four dot-separated components of one
// to nine decimal digits each and `candidate` is greater, missing components
// counting as 0 ("1.0.5" equals "1.0.5.0"). A text that does not parse is
// never newer, so a malformed published version never triggers an update.
bool IsNewerVersion(std::wstring_view candidate, std::wstring_view current);

}  // namespace patch
