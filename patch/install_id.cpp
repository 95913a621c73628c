#include "patch/install_id.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include "app/paths.h"
#include "crypto/hex.h"
#include "platform/path_text.h"
#include "platform/random_id.h"

namespace patch {
namespace {

namespace fs = std::filesystem;

std::wstring ReadStoredId(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  const std::string bytes = content.str();
  const auto first = bytes.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return {};
  const auto last = bytes.find_last_not_of(" \t\r\n");
  const std::string trimmed = bytes.substr(first, last - first + 1);
  // Byte by byte: anything but the ASCII digits the check wants fails it anyway.
  return std::wstring(trimmed.begin(), trimmed.end());
}

bool WriteId(const fs::path& file, const std::wstring& id) {
  const std::string bytes(id.begin(), id.end());
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  out.close();
  return static_cast<bool>(out);
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
  const std::wstring stored = ReadStoredId(file);
  if (IsInstallIdentity(stored)) {
    id = stored;
    return true;
  }
  platform::RandomId random{};
  if (!platform::GenerateRandomId(random)) {
    errorText = L"failed to generate an install id (CoCreateGuid failed)";
    return false;
  }
  const std::wstring fresh = crypto::ToLowerHex(random.data(), random.size());
  if (!WriteId(file, fresh)) {
    errorText = L"failed to write " + platform::FromPath(file);
    return false;
  }
  id = fresh;
  return true;
}

}  // namespace patch
