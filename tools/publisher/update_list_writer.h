#pragma once
// The update list as the publisher writes it: pure ASCII JSON (every other
// character as a "\u" escape, pairs for characters beyond U+FFFF), schema 1,
// one file entry per line so two releases compare well in a diff.

#include <chrono>
#include <string>
#include <string_view>

#include "patch/manifest.h"

namespace publisher {

inline constexpr int kUpdateListSchema = 1;

// The list's bytes for `list`: "schema", "version", "channel",
// "generatedAt", "launcher" when hasLauncher, then "files" in their order,
// each with "chunks" when it has a chunk index.
std::string WriteUpdateList(const patch::SManifest& list);

// `text` as a quoted JSON string made only of printable ASCII.
void AppendAsciiJsonString(std::string& out, std::wstring_view text);

// "2024-05-01T12:34:56Z": the UTC time to the second.
std::wstring UtcTimestamp(std::chrono::system_clock::time_point time);

}  // namespace publisher
