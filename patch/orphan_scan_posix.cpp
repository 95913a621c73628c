// The walk and the deletion work through folder descriptors opened with
// O_NOFOLLOW, so a symbolic link in the game folder can never lead them
// elsewhere, even if it appears while they run.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <utility>
#include <vector>

#include "patch/orphan_scan_os.h"
#include "patch/protected_paths.h"
#include "text/utf.h"

namespace patch {
namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

class CFolderDescriptor {
 public:
  explicit CFolderDescriptor(int fd) : fd_(fd) {}
  ~CFolderDescriptor() {
    if (fd_ >= 0) close(fd_);
  }
  CFolderDescriptor(const CFolderDescriptor&) = delete;
  CFolderDescriptor& operator=(const CFolderDescriptor&) = delete;
  CFolderDescriptor& operator=(CFolderDescriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }

  int Get() const { return fd_; }
  bool IsOpen() const { return fd_ >= 0; }

 private:
  int fd_;
};

// The folder's files and folders; links and other kinds are left out.
std::vector<SWalkEntry> ListFolder(DIR* listing) {
  std::vector<SWalkEntry> entries;
  while (const dirent* item = readdir(listing)) {
    const std::string_view name = item->d_name;
    if (name == "." || name == "..") continue;
    // A name that is not UTF-8 has no wide form, so it could never be named
    // for removal either.
    std::wstring wideName = text::Utf8ToWide(name);
    if (wideName.empty()) continue;
    struct stat info {};
    if (fstatat(dirfd(listing), item->d_name, &info, AT_SYMLINK_NOFOLLOW) != 0) continue;
    if (S_ISDIR(info.st_mode) || S_ISREG(info.st_mode)) {
      entries.push_back({std::move(wideName), S_ISDIR(info.st_mode), static_cast<std::uint64_t>(info.st_size)});
    }
  }
  return entries;
}

// Takes ownership of `folderFd`.
void VisitFolder(int folderFd, const std::wstring& prefix, const GameFileVisitor& visit) {
  DIR* listing = fdopendir(folderFd);
  if (!listing) {
    close(folderFd);
    return;
  }
  std::vector<SWalkEntry> entries = ListFolder(listing);
  SortForWalk(entries);
  for (const SWalkEntry& entry : entries) {
    if (!entry.folder) {
      visit(prefix + entry.name, entry.size);
      continue;
    }
    const int child = openat(dirfd(listing), text::WideToUtf8(entry.name).c_str(), kFolderFlags);
    if (child >= 0) VisitFolder(child, prefix + entry.name + L'/', visit);
  }
  closedir(listing);
}

std::vector<std::wstring_view> SplitNames(std::wstring_view path) {
  std::vector<std::wstring_view> names;
  std::size_t start = 0;
  for (std::size_t i = 0; i <= path.size(); ++i) {
    if (i < path.size() && path[i] != L'/' && path[i] != L'\\') continue;
    if (i > start) names.push_back(path.substr(start, i - start));
    start = i + 1;
  }
  return names;
}

// The entry of the folder that `name` means: the exact name when it exists,
// else the first whose comparable form matches, as Windows would find it.
bool FindEntryName(int folderFd, std::wstring_view name, std::string& found) {
  found = text::WideToUtf8(name);
  struct stat info {};
  if (fstatat(folderFd, found.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0) return true;

  const int listingFd = openat(folderFd, ".", kFolderFlags);
  if (listingFd < 0) return false;
  DIR* listing = fdopendir(listingFd);
  if (!listing) {
    close(listingFd);
    return false;
  }
  const std::wstring wanted = ComparablePath(name);
  bool matched = false;
  while (const dirent* item = readdir(listing)) {
    if (ComparablePath(text::Utf8ToWide(item->d_name)) == wanted) {
      found = item->d_name;
      matched = true;
      break;
    }
  }
  closedir(listing);
  return matched;
}

}  // namespace

void VisitGameFiles(const std::wstring& folder, const GameFileVisitor& visit) {
  // The game folder itself may be a link: the user chose it.
  const int root = open(text::WideToUtf8(folder).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (root >= 0) VisitFolder(root, std::wstring(), visit);
}

bool DeleteGameFile(const std::wstring& folder, std::wstring_view relativePath, std::uint64_t& size) {
  size = 0;
  const std::vector<std::wstring_view> names = SplitNames(relativePath);
  if (names.empty()) return false;

  CFolderDescriptor current(open(text::WideToUtf8(folder).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  std::string entry;
  for (std::size_t i = 0; i + 1 < names.size(); ++i) {
    if (!current.IsOpen() || !FindEntryName(current.Get(), names[i], entry)) return false;
    current = CFolderDescriptor(openat(current.Get(), entry.c_str(), kFolderFlags));
  }
  if (!current.IsOpen() || !FindEntryName(current.Get(), names.back(), entry)) return false;

  struct stat info {};
  if (fstatat(current.Get(), entry.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISREG(info.st_mode)) return false;
  if (unlinkat(current.Get(), entry.c_str(), 0) != 0) return false;
  size = static_cast<std::uint64_t>(info.st_size);
  return true;
}

}  // namespace patch
