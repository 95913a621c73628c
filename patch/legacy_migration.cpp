#include "patch/legacy_migration.h"

#include <filesystem>
#include <system_error>

#include "platform/path_text.h"

namespace patch {

bool MigrateLegacyFiles(const std::wstring& legacyFolder, const std::wstring& runtimeFolder) {
  namespace fs = std::filesystem;
  const fs::path legacy = platform::ToPath(legacyFolder);
  const fs::path runtime = platform::ToPath(runtimeFolder);
  std::error_code error;
  if (legacyFolder.empty() || !fs::is_directory(legacy, error)) return true;
  if (runtimeFolder.empty()) return false;
  fs::create_directories(runtime, error);
  if (error) return false;
  bool complete = true;
  fs::directory_iterator entries(legacy, error);
  for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
    std::error_code fileError;
    if (!entries->is_regular_file(fileError)) continue;
    const fs::path target = runtime / entries->path().filename();
    if (fs::exists(target, fileError)) continue;
    // Without overwrite the copy still refuses a file that appeared meanwhile.
    fs::copy_file(entries->path(), target, fs::copy_options::none, fileError);
    if (fileError) complete = false;
  }
  return complete && !error;
}

}  // namespace patch
