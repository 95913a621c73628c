#pragma once
// Small line-based UTF-8 files of the runtime folder ("launcher.state",
// "integrity.cache"): reading them line by line, parsing their fields and
// rewriting them whole.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace patch {

// The file's lines, as SplitUtf8Lines gives them. False when the file cannot
// be opened.
bool ReadUtf8Lines(const std::wstring& file, std::vector<std::wstring>& lines);

// The text split at LF, each line converted from UTF-8 (a line that is not
// valid UTF-8 comes back empty); a final LF ends the last line, it does not
// start an empty one.
std::vector<std::wstring> SplitUtf8Lines(std::string_view bytes);

enum class EFileWriteResult { Written, NotOpened, WriteFailed };

// Creates the parent folder if needed, writes the bytes into a new file beside
// the old one (its name + ".tmp") and moves that over it, so a process killed
// at any moment leaves the old file or the new one, never a truncated mix (the
// state file holds the rollback floor). NotOpened: the new file could not be
// created; WriteFailed: it could not be written or moved into place.
EFileWriteResult RewriteFile(const std::wstring& file, std::string_view bytes);

// Without leading and trailing space, tab, CR and LF.
std::wstring_view TrimField(std::wstring_view text);

// Decimal digits only, no sign, no spaces, within 64 bits.
bool ParseUnsignedDecimal(std::wstring_view text, std::uint64_t& value);
// As above with an optional leading "-".
bool ParseSignedDecimal(std::wstring_view text, std::int64_t& value);

}  // namespace patch
