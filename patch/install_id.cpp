#include "patch/install_id.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <thread>

#include "app/paths.h"
#include "crypto/hex.h"
#include "platform/file_replace.h"
#include "platform/move_no_replace.h"
#include "platform/new_file.h"
#include "platform/path_text.h"
#include "platform/random_id.h"

namespace patch {
namespace {

namespace fs = std::filesystem;

// An id with generous blanks around it fits; nothing past this is read.
constexpr std::size_t kStoredIdReadLimit = 64;

// Only a regular file is read (a link, folder or pipe of that name is no
// stored id), and only its first bytes.
std::wstring ReadStoredId(const fs::path& file) {
  std::error_code error;
  if (!fs::is_regular_file(fs::symlink_status(file, error))) return {};
  std::ifstream in(file, std::ios::binary);
  char buffer[kStoredIdReadLimit];
  in.read(buffer, sizeof buffer);
  const std::string bytes(buffer, static_cast<std::size_t>(in.gcount()));
  const auto first = bytes.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return {};
  const auto last = bytes.find_last_not_of(" \t\r\n");
  const std::string trimmed = bytes.substr(first, last - first + 1);
  // Byte by byte: anything but the ASCII digits the check wants fails it anyway.
  return std::wstring(trimmed.begin(), trimmed.end());
}

// Two launchers started together on a fresh folder must end up with one id:
// each writes its own beside the file and only one moves in without
// replacing. Only a file that was there malformed from the start is replaced.
bool PlaceNewId(const fs::path& file, const std::wstring& fresh, bool replaceMalformed) {
  const fs::path temporary = platform::ToPath(platform::FromPath(file) + L"." + fresh + L".tmp");
  const std::string bytes(fresh.begin(), fresh.end());
  std::uint32_t code = 0;
  if (platform::WriteNewFile(temporary, bytes, code) != platform::ENewFileResult::Written) return false;
  if (replaceMalformed) {
    platform::MoveReplacingFile(temporary, file, code);
  } else {
    platform::MoveWithoutReplacing(temporary, file, code);
  }
  // On Windows the moved file's other name cannot go while another launcher
  // reads the id through it; it is let go a moment later.
  std::error_code error;
  for (int attempt = 0; attempt < 50 && !fs::remove(temporary, error) && platform::NameIsTaken(temporary); ++attempt) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

// The winner's id; a moment's retry covers a read that meets the file while
// another launcher still holds it.
std::wstring ReadPlacedId(const fs::path& file) {
  std::wstring id = ReadStoredId(file);
  for (int attempt = 0; attempt < 50 && !IsInstallIdentity(id) && platform::NameIsTaken(file); ++attempt) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    id = ReadStoredId(file);
  }
  return id;
}

}  // namespace

bool EnsureInstallId(const std::wstring& gameFolder, std::wstring& id, std::wstring& errorText) {
  const fs::path folder = platform::ToPath(gameFolder);
  std::error_code error;
  if (!fs::is_directory(folder, error)) {
    errorText = L"game directory does not exist: " + gameFolder;
    return false;
  }
  const fs::path file = folder / platform::ToPath(kInstallIdFileName);
  // Looked at before the read: a file that appears after it is another
  // launcher's fresh id, never a malformed one to replace.
  const bool existed = platform::NameIsTaken(file);
  // A file that is there may be another launcher's fresh id that cannot be
  // read for a moment (on Windows while it lets go of the id's other name):
  // it is read again before it counts as malformed and is replaced.
  std::wstring stored = existed ? ReadPlacedId(file) : ReadStoredId(file);
  if (!IsInstallIdentity(stored)) {
    platform::RandomId random{};
    if (!platform::GenerateRandomId(random)) {
      errorText = L"failed to generate an install id (CoCreateGuid failed)";
      return false;
    }
    if (PlaceNewId(file, crypto::ToLowerHex(random.data(), random.size()), existed)) stored = ReadPlacedId(file);
  }
  if (!IsInstallIdentity(stored)) {
    errorText = L"failed to write " + platform::FromPath(file);
    return false;
  }
  id = stored;
  return true;
}

}  // namespace patch
