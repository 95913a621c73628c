// The walk and the deletion hold every folder on their way open, without
// following reparse points and without letting anyone delete or rename it
// meanwhile (no FILE_SHARE_DELETE). Each folder and the file to delete are
// opened as themselves, refused when they are links (symbolic links,
// junctions), and checked through their handle to lie directly inside the
// folder held before them. A folder swapped for a junction while they run can
// therefore lead neither of them out of the game folder. Paths are handed to
// the OS in the "\\?\" form: long paths work, and names are taken literally.
#include <windows.h>

#include <string>
#include <utility>
#include <vector>

#include "patch/orphan_scan_os.h"
#include "platform/path_text.h"

namespace patch {
namespace {

// Folder handles take part in sharing only with a data access right; listing
// is one, and it is all a walk needs.
constexpr DWORD kFolderAccess = FILE_LIST_DIRECTORY | FILE_READ_ATTRIBUTES;
constexpr DWORD kFileDeleteAccess = DELETE | FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES;
constexpr DWORD kHoldShare = FILE_SHARE_READ | FILE_SHARE_WRITE;
constexpr DWORD kAnyShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
// A path relative to its volume, at most 32,767 characters.
constexpr std::size_t kNameInfoBytes = sizeof(FILE_NAME_INFO) + 32768 * sizeof(wchar_t);

class CHandle {
 public:
  CHandle() = default;
  explicit CHandle(HANDLE handle) : handle_(handle) {}
  ~CHandle() {
    if (IsOpen()) CloseHandle(handle_);
  }
  CHandle(CHandle&& other) noexcept : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}
  CHandle& operator=(CHandle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  CHandle(const CHandle&) = delete;
  CHandle& operator=(const CHandle&) = delete;

  HANDLE Get() const { return handle_; }
  bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }

 private:
  HANDLE handle_ = INVALID_HANDLE_VALUE;
};

bool IsSeparator(wchar_t unit) { return unit == L'/' || unit == L'\\'; }

bool IsFolder(DWORD attributes) { return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }

// Symbolic links and junctions lead out of the folder; other reparse points
// (cloud placeholders, deduplicated files) are ordinary files and folders.
bool IsLink(DWORD attributes, DWORD reparseTag) {
  return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
         (reparseTag == IO_REPARSE_TAG_SYMLINK || reparseTag == IO_REPARSE_TAG_MOUNT_POINT);
}

std::uint64_t Combine(DWORD high, DWORD low) { return (static_cast<std::uint64_t>(high) << 32) | low; }

// One file or folder held open, with its path on its volume.
struct SHeldEntry {
  CHandle handle;
  std::wstring volumePath;
  DWORD attributes = 0;
  std::uint64_t size = 0;
};

bool ReadVolumePath(HANDLE handle, std::wstring& volumePath) {
  std::vector<std::byte> buffer(kNameInfoBytes);
  if (!GetFileInformationByHandleEx(handle, FileNameInfo, buffer.data(), static_cast<DWORD>(buffer.size()))) {
    return false;
  }
  const auto* info = reinterpret_cast<const FILE_NAME_INFO*>(buffer.data());
  volumePath.assign(info->FileName, info->FileNameLength / sizeof(wchar_t));
  return true;
}

// Opens `path` (in the "\\?\" form) with `flags` and reads what it is; fails
// when that is a link or its path on its volume cannot be read.
bool OpenEntry(const std::wstring& path, DWORD access, DWORD share, DWORD flags, SHeldEntry& entry) {
  entry.handle = CHandle(CreateFileW(path.c_str(), access, share, nullptr, OPEN_EXISTING, flags, nullptr));
  BY_HANDLE_FILE_INFORMATION info{};
  if (!entry.handle.IsOpen() || !GetFileInformationByHandle(entry.handle.Get(), &info)) return false;
  entry.attributes = info.dwFileAttributes;
  entry.size = Combine(info.nFileSizeHigh, info.nFileSizeLow);
  FILE_ATTRIBUTE_TAG_INFO tag{};
  if ((entry.attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
      (!GetFileInformationByHandleEx(entry.handle.Get(), FileAttributeTagInfo, &tag, sizeof(tag)) ||
       IsLink(entry.attributes, tag.ReparseTag))) {
    return false;
  }
  return ReadVolumePath(entry.handle.Get(), entry.volumePath);
}

// True when `child` sits directly inside `folder`: the folder's path, a
// separator and one name.
bool LiesDirectlyIn(const SHeldEntry& child, const SHeldEntry& folder) {
  std::wstring prefix = folder.volumePath;
  if (!prefix.ends_with(L'\\')) prefix += L'\\';
  if (child.volumePath.size() <= prefix.size()) return false;
  const std::wstring_view head = std::wstring_view(child.volumePath).substr(0, prefix.size());
  return CompareStringOrdinal(head.data(), static_cast<int>(head.size()), prefix.data(),
                              static_cast<int>(prefix.size()), TRUE) == CSTR_EQUAL &&
         child.volumePath.find(L'\\', prefix.size()) == std::wstring::npos;
}

// The game folder itself may be a link: the user chose it.
bool OpenGameFolder(const std::wstring& systemPath, SHeldEntry& folder) {
  return OpenEntry(systemPath, kFolderAccess, kHoldShare, FILE_FLAG_BACKUP_SEMANTICS, folder) &&
         IsFolder(folder.attributes);
}

bool OpenFolderInside(const SHeldEntry& parent, const std::wstring& systemPath, SHeldEntry& folder) {
  return OpenEntry(systemPath, kFolderAccess, kHoldShare, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT,
                   folder) &&
         IsFolder(folder.attributes) && LiesDirectlyIn(folder, parent);
}

bool OpenFileForDeletion(const SHeldEntry& parent, const std::wstring& systemPath, SHeldEntry& file) {
  return OpenEntry(systemPath, kFileDeleteAccess, kAnyShare, FILE_FLAG_OPEN_REPARSE_POINT, file) &&
         !IsFolder(file.attributes) && LiesDirectlyIn(file, parent);
}

// A read-only file refuses deletion; clearing the attribute is all it takes.
bool DeleteThroughHandle(const SHeldEntry& file) {
  if ((file.attributes & FILE_ATTRIBUTE_READONLY) != 0) {
    FILE_BASIC_INFO basic{};  // times of zero stay as they are
    basic.FileAttributes = FILE_ATTRIBUTE_NORMAL;
    if (!SetFileInformationByHandle(file.handle.Get(), FileBasicInfo, &basic, sizeof(basic))) return false;
  }
  FILE_DISPOSITION_INFO disposition{TRUE};
  return SetFileInformationByHandle(file.handle.Get(), FileDispositionInfo, &disposition, sizeof(disposition));
}

std::wstring GameFolderSystemPath(const std::wstring& folder) {
  return platform::SystemPath(platform::ToPath(folder)).native();
}

// A volume's root keeps its separator; other folders have none at the end.
std::wstring Join(const std::wstring& folder, std::wstring_view name) {
  std::wstring path = folder;
  if (!path.ends_with(L'\\')) path += L'\\';
  path += name;
  return path;
}

// The files and folders listed in the held folder at `systemPath`; links are
// left out here already.
std::vector<SWalkEntry> ListFolder(const std::wstring& systemPath) {
  std::vector<SWalkEntry> entries;
  WIN32_FIND_DATAW data;
  const HANDLE find = FindFirstFileExW(Join(systemPath, L"*").c_str(), FindExInfoBasic, &data, FindExSearchNameMatch,
                                       nullptr, FIND_FIRST_EX_LARGE_FETCH);
  if (find == INVALID_HANDLE_VALUE) return entries;
  do {
    const std::wstring_view name = data.cFileName;
    if (name == L"." || name == L".." || IsLink(data.dwFileAttributes, data.dwReserved0)) continue;
    entries.push_back(
        {std::wstring(name), IsFolder(data.dwFileAttributes), Combine(data.nFileSizeHigh, data.nFileSizeLow)});
  } while (FindNextFileW(find, &data));
  FindClose(find);
  return entries;
}

void VisitFolder(const SHeldEntry& folder, const std::wstring& systemPath, const std::wstring& prefix,
                 const GameFileVisitor& visit) {
  std::vector<SWalkEntry> entries = ListFolder(systemPath);
  SortForWalk(entries);
  for (const SWalkEntry& entry : entries) {
    if (!entry.folder) {
      visit(prefix + entry.name, entry.size);
      continue;
    }
    const std::wstring childPath = Join(systemPath, entry.name);
    SHeldEntry child;
    // A folder that cannot be opened, or is no longer a folder here, is skipped.
    if (OpenFolderInside(folder, childPath, child)) VisitFolder(child, childPath, prefix + entry.name + L'\\', visit);
  }
}

std::vector<std::wstring_view> SplitNames(std::wstring_view path) {
  std::vector<std::wstring_view> names;
  std::size_t start = 0;
  for (std::size_t i = 0; i <= path.size(); ++i) {
    if (i < path.size() && !IsSeparator(path[i])) continue;
    if (i > start) names.push_back(path.substr(start, i - start));
    start = i + 1;
  }
  return names;
}

}  // namespace

void VisitGameFiles(const std::wstring& folder, const GameFileVisitor& visit) {
  const std::wstring root = GameFolderSystemPath(folder);
  SHeldEntry held;
  if (OpenGameFolder(root, held)) VisitFolder(held, root, std::wstring(), visit);
}

bool DeleteGameFile(const std::wstring& folder, std::wstring_view relativePath, std::uint64_t& size) {
  size = 0;
  // A ":" would name a stream of a file, not a file; the walk never reports one.
  if (relativePath.find(L':') != std::wstring_view::npos) return false;
  const std::vector<std::wstring_view> names = SplitNames(relativePath);
  if (names.empty()) return false;

  std::wstring path = GameFolderSystemPath(folder);
  std::vector<SHeldEntry> held(names.size());
  if (!OpenGameFolder(path, held[0])) return false;
  for (std::size_t i = 0; i + 1 < names.size(); ++i) {
    path = Join(path, names[i]);
    if (!OpenFolderInside(held[i], path, held[i + 1])) return false;
  }
  path = Join(path, names.back());
  SHeldEntry file;
  if (!OpenFileForDeletion(held.back(), path, file) || !DeleteThroughHandle(file)) return false;
  size = file.size;
  return true;
}

}  // namespace patch
