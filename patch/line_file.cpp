#include "patch/line_file.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>

#include "platform/file_replace.h"
#include "platform/new_file.h"
#include "platform/path_text.h"
#include "text/utf.h"

namespace patch {
namespace {

constexpr std::wstring_view kFieldSpace = L" \t\r\n";
constexpr std::wstring_view kRewriteSuffix = L".tmp";

}  // namespace

bool ReadUtf8Lines(const std::wstring& file, std::vector<std::wstring>& lines) {
  lines.clear();
  std::ifstream in(platform::ToPath(file), std::ios::binary);
  if (!in) return false;
  const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  lines = SplitUtf8Lines(bytes);
  return true;
}

std::vector<std::wstring> SplitUtf8Lines(std::string_view bytes) {
  std::vector<std::wstring> lines;
  while (!bytes.empty()) {
    const std::size_t end = std::min(bytes.find('\n'), bytes.size());
    lines.push_back(text::Utf8ToWide(bytes.substr(0, end)));
    bytes.remove_prefix(std::min(end + 1, bytes.size()));
  }
  return lines;
}

EFileWriteResult RewriteFile(const std::wstring& file, std::string_view bytes) {
  const std::filesystem::path path = platform::ToPath(file);
  const std::filesystem::path temporary = platform::ToPath(file + std::wstring(kRewriteSuffix));
  std::error_code ignored;  // a folder that cannot be made shows up as the create failing
  std::filesystem::create_directories(path.parent_path(), ignored);
  // Left by a run killed before its move (or planted there): the bytes go only
  // into a file this call creates.
  std::filesystem::remove(temporary, ignored);
  std::uint32_t code = 0;
  switch (platform::WriteNewFile(temporary, bytes, code)) {
    case platform::ENewFileResult::NotCreated:
      return EFileWriteResult::NotOpened;
    case platform::ENewFileResult::NotWritten:
      return EFileWriteResult::WriteFailed;
    case platform::ENewFileResult::Written:
      break;
  }
  if (platform::MoveReplacingFile(temporary, path, code)) return EFileWriteResult::Written;
  std::filesystem::remove(temporary, ignored);
  return EFileWriteResult::WriteFailed;
}

std::wstring_view TrimField(std::wstring_view text) {
  const size_t first = text.find_first_not_of(kFieldSpace);
  if (first == std::wstring_view::npos) return {};
  const size_t last = text.find_last_not_of(kFieldSpace);
  return text.substr(first, last - first + 1);
}

bool ParseUnsignedDecimal(std::wstring_view text, std::uint64_t& value) {
  if (text.empty()) return false;
  constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();
  std::uint64_t result = 0;
  for (const wchar_t c : text) {
    if (c < L'0' || c > L'9') return false;
    const auto digit = static_cast<std::uint64_t>(c - L'0');
    if (result > (kMax - digit) / 10) return false;
    result = result * 10 + digit;
  }
  value = result;
  return true;
}

bool ParseSignedDecimal(std::wstring_view text, std::int64_t& value) {
  const bool negative = text.starts_with(L'-');
  std::uint64_t magnitude = 0;
  if (!ParseUnsignedDecimal(negative ? text.substr(1) : text, magnitude)) return false;
  constexpr auto kMaxPositive = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  if (negative) {
    if (magnitude > kMaxPositive + 1) return false;
    // Through unsigned negation so INT64_MIN needs no overflowing step.
    value = static_cast<std::int64_t>(0 - magnitude);
  } else {
    if (magnitude > kMaxPositive) return false;
    value = static_cast<std::int64_t>(magnitude);
  }
  return true;
}

}  // namespace patch
