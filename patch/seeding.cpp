#include "patch/seeding.h"

#include <cstdint>
#include <system_error>

#include "platform/embedded_resource.h"
#include "platform/move_no_replace.h"
#include "platform/new_file.h"
#include "platform/path_text.h"

namespace patch {
namespace {

namespace fs = std::filesystem;

void RemoveQuietly(const fs::path& path) {
  std::error_code ignored;
  fs::remove(path, ignored);
}

}  // namespace

bool WriteSeedFile(const fs::path& targetPath, const std::uint8_t* bytes, std::size_t count) {
  const fs::path temporary = platform::ToPath(platform::FromPath(targetPath) + std::wstring(kSeedTemporarySuffix));
  // A stale temporary (or a link planted under its name) goes first: the copy
  // is written only into a file this call creates.
  RemoveQuietly(temporary);
  std::uint32_t errorCode = 0;
  if (platform::WriteNewFile(temporary, {reinterpret_cast<const char*>(bytes), count}, errorCode) !=
      platform::ENewFileResult::Written) {
    return false;
  }
  if (!platform::MoveWithoutReplacing(temporary, targetPath, errorCode)) {
    RemoveQuietly(temporary);
    return false;
  }
  return true;
}

SSeedResult SeedMissingConfigs(const std::wstring& gameFolder) {
  SSeedResult result;
  const fs::path folder = platform::ToPath(gameFolder);
  std::error_code ignored;
  fs::create_directories(folder, ignored);
  for (const SSeedFile& seed : kSeedFiles) {
    const std::wstring name(seed.fileName);
    const fs::path target = folder / platform::ToPath(name);
    if (platform::NameIsTaken(target)) {
      result.present.push_back(name);
      continue;
    }
    const std::span<const std::uint8_t> bytes = platform::LoadEmbeddedResource(seed.resourceId);
    if (bytes.empty()) continue;
    (WriteSeedFile(target, bytes.data(), bytes.size()) ? result.written : result.failed).push_back(name);
  }
  return result;
}

}  // namespace patch
