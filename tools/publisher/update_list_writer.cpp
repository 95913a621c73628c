#include "tools/publisher/update_list_writer.h"

#include <cstdint>
#include <cstdio>

#include "text/json.h"

namespace publisher {
namespace {

constexpr char kHexDigits[] = "0123456789abcdef";

void AppendUnitEscape(std::string& out, std::uint32_t unit) {
  out += "\\u";
  for (int shift = 12; shift >= 0; shift -= 4) out += kHexDigits[(unit >> shift) & 0xF];
}

const char* ShortEscape(std::uint32_t c) {
  switch (c) {
    case '"': return "\\\"";
    case '\\': return "\\\\";
    case '\b': return "\\b";
    case '\f': return "\\f";
    case '\n': return "\\n";
    case '\r': return "\\r";
    case '\t': return "\\t";
    default: return nullptr;
  }
}

// The members every reference to a blob carries, the launcher's included.
void AppendBlobMembers(std::string& out, std::wstring_view sha256, std::uint64_t size) {
  text::AppendJsonKey(out, "sha256");
  AppendAsciiJsonString(out, sha256);
  text::AppendJsonKey(out, "size");
  text::AppendJsonCount(out, size);
}

}  // namespace

void AppendAsciiJsonString(std::string& out, std::wstring_view text) {
  out += '"';
  for (const wchar_t unit : text) {
    const auto c = static_cast<std::uint32_t>(unit);
    if (const char* escape = ShortEscape(c)) {
      out += escape;
    } else if (c >= 0x20 && c < 0x7F) {
      out += static_cast<char>(c);
    } else if (c > 0xFFFF) {
      // One wchar_t on Linux; written as the UTF-16 pair Windows holds.
      const std::uint32_t offset = c - 0x10000;
      AppendUnitEscape(out, 0xD800 + (offset >> 10));
      AppendUnitEscape(out, 0xDC00 + (offset & 0x3FF));
    } else {
      AppendUnitEscape(out, c);
    }
  }
  out += '"';
}

std::string WriteUpdateList(const patch::SManifest& list) {
  std::string out = "{";
  text::AppendJsonKey(out, "schema");
  text::AppendJsonInt(out, kUpdateListSchema);
  text::AppendJsonKey(out, "version");
  text::AppendJsonCount(out, list.version);
  text::AppendJsonKey(out, "channel");
  AppendAsciiJsonString(out, list.channel);
  text::AppendJsonKey(out, "generatedAt");
  AppendAsciiJsonString(out, list.generatedAt);
  if (list.hasLauncher) {
    text::AppendJsonKey(out, "launcher");
    out += '{';
    text::AppendJsonKey(out, "productVersion");
    AppendAsciiJsonString(out, list.launcherProductVersion);
    AppendBlobMembers(out, list.launcherSha256, list.launcherSize);
    out += '}';
  }
  text::AppendJsonKey(out, "files");
  out += '[';
  for (const patch::SManifestEntry& entry : list.files) {
    if (out.back() != '[') out += ',';
    out += "\n{";
    text::AppendJsonKey(out, "path");
    AppendAsciiJsonString(out, entry.path);
    AppendBlobMembers(out, entry.sha256, entry.size);
    if (!entry.chunkIndexSha256.empty()) {
      text::AppendJsonKey(out, "chunks");
      out += '{';
      AppendBlobMembers(out, entry.chunkIndexSha256, entry.chunkIndexSize);
      out += '}';
    }
    out += '}';
  }
  out += "\n]}\n";
  return out;
}

std::wstring UtcTimestamp(std::chrono::system_clock::time_point time) {
  using namespace std::chrono;
  const auto second = floor<seconds>(time);
  const auto day = floor<days>(second);
  const year_month_day date{day};
  const hh_mm_ss clock{second - day};
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%04d-%02u-%02uT%02d:%02d:%02dZ",
                static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()));
  return std::wstring(buffer, buffer + std::char_traits<char>::length(buffer));
}

}  // namespace publisher
