#include "patch/integrity_cache.h"

#include <algorithm>
#include <cwctype>
#include <filesystem>
#include <utility>
#include <vector>

#include "patch/line_file.h"
#include "platform/path_text.h"
#include "text/utf.h"

namespace patch {
namespace {

constexpr std::wstring_view kCacheFileName = L"integrity.cache";
constexpr wchar_t kFieldSeparator = L'|';

// Splits "key|size|mtime|sha256" from the right, so a key holding "|" (a
// legal file name character on Linux) still reads back whole.
bool ParseRecordLine(std::wstring_view line, std::wstring& key, std::uint64_t& size, std::int64_t& mtime,
                     std::wstring& sha256) {
  const size_t hashStart = line.rfind(kFieldSeparator);
  if (hashStart == std::wstring_view::npos || hashStart == 0) return false;
  const size_t mtimeStart = line.rfind(kFieldSeparator, hashStart - 1);
  if (mtimeStart == std::wstring_view::npos || mtimeStart == 0) return false;
  const size_t sizeStart = line.rfind(kFieldSeparator, mtimeStart - 1);
  if (sizeStart == std::wstring_view::npos) return false;
  if (!ParseUnsignedDecimal(TrimField(line.substr(sizeStart + 1, mtimeStart - sizeStart - 1)), size) ||
      !ParseSignedDecimal(TrimField(line.substr(mtimeStart + 1, hashStart - mtimeStart - 1)), mtime)) {
    return false;
  }
  key = TrimField(line.substr(0, sizeStart));
  sha256 = TrimField(line.substr(hashStart + 1));
  return true;
}

bool IsSeparator(wchar_t c) { return c == L'/' || c == L'\\'; }

// True when lexical normalisation and the trip through a path object would
// return `path` unchanged (up to the separator rewrite that follows anyway):
// no "." or ".." segment, no doubled separator, no drive-relative form and
// no surrogate or out-of-range unit, which the UTF-8 round trip rewrites.
// Anything unusual takes the full route; this only spares the common case,
// one lookup per game file on every check.
bool IsAlreadyNormal(std::wstring_view path) {
  std::size_t segmentStart = 0;
  for (std::size_t i = 0; i <= path.size(); ++i) {
    if (i < path.size()) {
      const auto unit = static_cast<std::uint32_t>(path[i]);
      if ((unit >= 0xD800 && unit <= 0xDFFF) || unit > 0x10FFFF) return false;
      if (path[i] == L':' && (i != 1 || (i + 1 < path.size() && !IsSeparator(path[i + 1])))) return false;
      if (!IsSeparator(path[i])) continue;
    }
    const std::wstring_view segment = path.substr(segmentStart, i - segmentStart);
    if (segment == L"." || segment == L"..") return false;
    if (segment.empty() && i != 0 && i != path.size()) return false;
    segmentStart = i + 1;
  }
  return true;
}

}  // namespace

IntegrityRecords ParseIntegrityCache(const std::vector<std::wstring>& lines) {
  IntegrityRecords records;
  for (const std::wstring& line : lines) {
    std::wstring key;
    SIntegrityRecord record;
    if (ParseRecordLine(TrimField(line), key, record.size, record.mtime, record.sha256)) {
      records[std::move(key)] = std::move(record);
    }
  }
  return records;
}

std::string FormatIntegrityCache(const IntegrityRecords& records) {
  std::string bytes;
  for (const auto& [key, record] : records) {
    // A file name may hold a line break on Linux; its record could not be
    // read back as one line, so that file is simply hashed again next time.
    if (key.find_first_of(L"\r\n") != std::wstring::npos) continue;
    bytes.append(text::WideToUtf8(key)).append("|");
    bytes.append(std::to_string(record.size)).append("|");
    bytes.append(std::to_string(record.mtime)).append("|");
    bytes.append(text::WideToUtf8(record.sha256)).append("\n");
  }
  return bytes;
}

std::wstring IntegrityCacheKey(const std::wstring& fullPath) {
  std::wstring key = IsAlreadyNormal(fullPath)
                         ? fullPath
                         : platform::FromPath(platform::ToPath(fullPath).lexically_normal());
  std::replace(key.begin(), key.end(), L'\\', L'/');
  // ASCII letters inline, as towlower maps them in the C locale (and whatever
  // locale a UI toolkit may select); everything else through towlower.
  for (wchar_t& c : key) {
    if (c >= L'A' && c <= L'Z') {
      c = static_cast<wchar_t>(c + (L'a' - L'A'));
    } else if (static_cast<std::uint32_t>(c) >= 0x80) {
      c = static_cast<wchar_t>(std::towlower(c));
    }
  }
  return key;
}

CIntegrityCache::CIntegrityCache(std::wstring runtimeFolder) : runtimeFolder_(std::move(runtimeFolder)) {}

bool CIntegrityCache::Lookup(const std::wstring& fullPath, std::uint64_t size, std::int64_t mtime,
                             std::wstring& sha256) {
  EnsureLoaded();
  const auto found = records_.find(IntegrityCacheKey(fullPath));
  if (found == records_.end()) return false;
  const SIntegrityRecord& record = found->second;
  if (record.size != size || record.mtime != mtime || record.sha256.empty()) return false;
  sha256 = record.sha256;
  return true;
}

void CIntegrityCache::Store(const std::wstring& fullPath, std::uint64_t size, std::int64_t mtime,
                            const std::wstring& sha256) {
  EnsureLoaded();
  records_[IntegrityCacheKey(fullPath)] = SIntegrityRecord{size, mtime, sha256};
  dirty_ = true;
}

void CIntegrityCache::Persist() {
  if (!loaded_ || !dirty_) return;
  if (RewriteFile(CacheFile(), FormatIntegrityCache(records_)) == EFileWriteResult::Written) dirty_ = false;
}

void CIntegrityCache::EnsureLoaded() {
  if (loaded_) return;
  loaded_ = true;
  std::vector<std::wstring> lines;
  records_ = ReadUtf8Lines(CacheFile(), lines) ? ParseIntegrityCache(lines) : IntegrityRecords{};
}

std::wstring CIntegrityCache::CacheFile() const {
  return platform::FromPath(platform::ToPath(runtimeFolder_) / platform::ToPath(kCacheFileName));
}

}  // namespace patch
