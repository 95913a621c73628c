#pragma once
// Locale files: one flat JSON object of key -> display text, read by a small
// reader of its own that works on the UTF-8 bytes (not the general JSON parser).

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <unordered_map>

namespace text {

using StringTable = std::unordered_map<std::wstring, std::wstring>;

// The largest locale file taken from the patch host.
inline constexpr std::size_t kMaxLocaleFileBytes = 1024 * 1024;

// Reads `{ "key": "text", ... }`. Every value must be a string; anything else
// rejects the whole text. Bytes after the closing brace are not examined. Each
// "\u" escape becomes UTF-8 on its own, so an escaped surrogate pair turns
// into two U+FFFD rather than one character. For a repeated key the first
// occurrence wins. On failure `table` is left empty.
bool ParseLocaleObject(std::string_view utf8, StringTable& table);

// Replaces `table` with the file's entries. Fails with "Could not open locale
// file." or "Locale JSON could not be parsed.", leaving `table` empty.
bool LoadLocaleFile(const std::filesystem::path& file, StringTable& table, std::wstring& errorText);

}  // namespace text
