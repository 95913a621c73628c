#include "tools/publisher/game_folder_scan.h"

#include <algorithm>
#include <system_error>
#include <type_traits>
#include <unordered_map>

#include "patch/protected_paths.h"
#include "patch/relative_path.h"
#include "platform/path_text.h"
#include "text/utf.h"

namespace publisher {
namespace {

constexpr std::wstring_view kReservedCharacters = L"<>:\"/\\|?*";
constexpr std::wstring_view kReservedDeviceNames[] = {L"con", L"prn", L"aux", L"nul"};
constexpr std::wstring_view kNumberedDeviceNames[] = {L"com", L"lpt"};

wchar_t AsciiLower(wchar_t c) { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + (L'a' - L'A')) : c; }

// CON, NUL, COM1 ... with or without an extension name a device, not a file.
bool IsDeviceName(std::wstring_view name) {
  std::wstring base(name.substr(0, name.find(L'.')));
  while (!base.empty() && base.back() == L' ') base.pop_back();
  std::transform(base.begin(), base.end(), base.begin(), AsciiLower);
  if (std::find(std::begin(kReservedDeviceNames), std::end(kReservedDeviceNames), base) !=
      std::end(kReservedDeviceNames)) {
    return true;
  }
  return base.size() == 4 && base[3] >= L'1' && base[3] <= L'9' &&
         std::find(std::begin(kNumberedDeviceNames), std::end(kNumberedDeviceNames), base.substr(0, 3)) !=
             std::end(kNumberedDeviceNames);
}

// The relative path's components in the program's text form, or false when
// a name does not survive the trip to text and back (bytes that are not
// UTF-8 on Linux, an unpaired surrogate on Windows).
bool ComponentTexts(const std::filesystem::path& relative, std::vector<std::wstring>& names) {
  names.clear();
  for (const std::filesystem::path& part : relative) {
    std::wstring name = platform::FromPath(part);
    if (name.empty() || platform::ToPath(name) != part) return false;
    names.push_back(std::move(name));
  }
  return !names.empty();
}

// Shows a name that is not valid text with "?" for each unit outside ASCII.
std::wstring DisplayText(const std::filesystem::path& relative) {
  std::wstring shown;
  for (const auto unit : relative.native()) {
    const auto code = static_cast<std::make_unsigned_t<std::filesystem::path::value_type>>(unit);
    if (unit == std::filesystem::path::preferred_separator) {
      shown.push_back(L'/');
    } else {
      shown.push_back(code < 0x80 ? static_cast<wchar_t>(code) : L'?');
    }
  }
  return shown;
}

std::wstring JoinWithSlashes(const std::vector<std::wstring>& names) {
  std::wstring joined;
  for (const std::wstring& name : names) {
    if (!joined.empty()) joined += L'/';
    joined += name;
  }
  return joined;
}

// Why the file at `relative` cannot be published, or an empty text.
std::wstring Refusal(const std::filesystem::path& relative, std::wstring& path) {
  std::vector<std::wstring> names;
  if (!ComponentTexts(relative, names)) {
    path = DisplayText(relative);
    return L"its name is not valid Unicode";
  }
  path = JoinWithSlashes(names);
  if (!std::all_of(names.begin(), names.end(), [](const std::wstring& n) { return IsWindowsStorableName(n); })) {
    return L"Windows cannot store this name";
  }
  std::wstring normalised;
  if (!patch::ValidateRelativePath(path, normalised) || normalised != path) {
    return L"the launcher would not read this path as it is";
  }
  return {};
}

void SortByUtf8(std::vector<SGameFile>& files) {
  std::vector<std::pair<std::string, std::size_t>> keys;
  keys.reserve(files.size());
  for (std::size_t i = 0; i < files.size(); ++i) keys.emplace_back(text::WideToUtf8(files[i].path), i);
  std::sort(keys.begin(), keys.end());
  std::vector<SGameFile> sorted;
  sorted.reserve(files.size());
  for (const auto& key : keys) sorted.push_back(std::move(files[key.second]));
  files = std::move(sorted);
}

std::vector<std::wstring> CaseClashes(const std::vector<SGameFile>& files) {
  std::unordered_map<std::wstring, const SGameFile*> seen;
  std::vector<std::wstring> clashes;
  for (const SGameFile& file : files) {
    const auto [first, inserted] = seen.try_emplace(patch::ComparablePath(file.path), &file);
    if (!inserted) clashes.push_back(first->second->path + L" and " + file.path);
  }
  return clashes;
}

}  // namespace

bool IsWindowsStorableName(std::wstring_view name) {
  if (name.empty() || name.back() == L' ' || name.back() == L'.') return false;
  for (const wchar_t c : name) {
    if (c < 0x20 || kReservedCharacters.find(c) != std::wstring_view::npos) return false;
  }
  return !IsDeviceName(name);
}

bool ScanGameFolder(const std::filesystem::path& folder, SFolderScan& scan, std::wstring& error) {
  scan = SFolderScan{};
  std::error_code ec;
  std::filesystem::recursive_directory_iterator walk(folder, ec);
  for (; !ec && walk != std::filesystem::recursive_directory_iterator(); walk.increment(ec)) {
    const std::filesystem::directory_entry& entry = *walk;
    const std::filesystem::path relative = entry.path().lexically_relative(folder);
    std::error_code statusError;
    const bool isLink = entry.is_symlink(statusError);
    const std::filesystem::file_status status = entry.status(statusError);
    if (std::filesystem::is_directory(status) && !isLink) continue;

    SGameFile file;
    std::wstring refusal = Refusal(relative, file.path);
    if (refusal.empty() && std::filesystem::is_directory(status)) refusal = L"a link to a folder is not followed";
    if (refusal.empty() && !std::filesystem::is_regular_file(status)) refusal = L"it is not a regular file";
    if (refusal.empty()) {
      file.size = entry.file_size(statusError);
      if (statusError) refusal = L"its size cannot be read";
    }
    if (!refusal.empty()) {
      scan.skipped.push_back({std::move(file.path), std::move(refusal)});
      continue;
    }
    file.source = entry.path();
    scan.files.push_back(std::move(file));
  }
  if (ec) {
    error = platform::FromPath(folder) + L": the folder could not be read (" + text::Utf8ToWide(ec.message()) + L")";
    return false;
  }
  SortByUtf8(scan.files);
  scan.caseClashes = CaseClashes(scan.files);
  return true;
}

}  // namespace publisher
