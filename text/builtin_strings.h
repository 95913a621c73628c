#pragma once
// The last-resort string table, used when the English locale file cannot be
// loaded. Its texts are the Arabic interface texts except "eta", "scanning"
// and "finalizing", which are English; that mix is intended.

#include <span>
#include <string_view>

#include "text/locale_file.h"

namespace text {

struct SBuiltinString {
  std::string_view key;
  std::u8string_view text;
};

// The 41 entries in their fixed order, as UTF-8.
std::span<const SBuiltinString> BuiltinStrings();

// The same entries as a lookup table, converted once on first use.
const StringTable& BuiltinStringTable();

}  // namespace text
