#pragma once
// Default game settings files. The update list does not carry them because
// they belong to the user once created; when one is missing, the copy
// compiled into the program is written, never over an existing file.

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace patch {

struct SSeedFile {
  int resourceId;
  std::wstring_view fileName;
};

// In the order they are seeded and reported.
inline constexpr std::array<SSeedFile, 3> kSeedFiles{{
    {203, L"locale.cfg"},
    {204, L"korvex.cfg"},
    {205, L"mouse.cfg"},
}};

inline constexpr std::wstring_view kSeedTemporarySuffix = L".seed.tmp";

// File names, each list in the order of kSeedFiles.
struct SSeedResult {
  std::vector<std::wstring> written;
  std::vector<std::wstring> present;
  std::vector<std::wstring> failed;
};

// Writes every missing seed file into the game folder (creating the folder).
// A file already there, even an empty one, counts as present; a seed whose
// resource the program does not carry is skipped without a report.
SSeedResult SeedMissingConfigs(const std::wstring& gameFolder);

// Writes the bytes to target + ".seed.tmp" (replacing a stale one) and moves
// that onto the target without replacing it: false, with the temporary
// removed, when the target appeared meanwhile or any step fails.
bool WriteSeedFile(const std::filesystem::path& targetPath, const std::uint8_t* bytes, std::size_t count);

}  // namespace patch
