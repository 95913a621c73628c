#pragma once
// File writes on the patch host folder. Whatever a launcher may be reading
// is replaced in one rename, never rewritten in place, so a reader sees the
// old file or the new one and nothing in between.

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace publisher {

// A new, unique name beside `target` for the bytes that will replace it.
std::filesystem::path TemporarySibling(const std::filesystem::path& target);

// Writes `bytes` to a temporary sibling, then renames it onto `target`.
bool ReplaceFileAtomically(const std::filesystem::path& target, std::string_view bytes, std::wstring& error);

// The whole file; false with a sentence when it cannot be read or holds more
// than `limit` bytes.
bool ReadWholeFile(const std::filesystem::path& path, std::size_t limit, std::string& bytes, std::wstring& error);

// "<path>: <reason>" with the path in the program's text form.
std::wstring PathProblem(const std::filesystem::path& path, std::wstring_view reason);

}  // namespace publisher
