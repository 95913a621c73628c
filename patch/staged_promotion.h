#pragma once
// Downloaded content never goes straight over a game file: a verified blob in
// the staging folder is copied beside its target and renamed over it, so a
// target is always either the old file or the whole new one.

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>

namespace patch {

// The switch a newly staged launcher is started with to replace the old one.
inline constexpr std::wstring_view kApplySelfUpdateSwitch = L"--apply-self-update";

// The "staging" folder under the runtime folder, where blobs wait to be promoted.
std::filesystem::path StagingRoot(const std::filesystem::path& runtimeFolder);

// staging/ab/abcdef... (the whole hash); empty unless `sha256` is 64 lower-case hex digits.
std::filesystem::path StagedBlobPath(const std::filesystem::path& stagingRoot, const std::wstring& sha256);
// The staged path + ".part", where the download is written; empty with it.
std::filesystem::path PartialBlobPath(const std::filesystem::path& stagingRoot, const std::wstring& sha256);

// Checks the staged file exists and creates the target's folders.
bool PrepareStagedPromotion(const std::filesystem::path& staged, const std::filesystem::path& target,
                            std::wstring& error);

// Copies the staged blob to "<target>.promote.tmp" and renames that over the target.
// The staged blob stays, so one blob can be promoted onto several targets.
bool PromoteStagedFile(const std::filesystem::path& staged, const std::filesystem::path& target,
                       std::wstring& error);

// How long ReplaceLockedFile waits for a target held by an exiting process.
struct SUnlockWait {
  int attempts = 120;
  std::chrono::milliseconds interval{250};
};

// The patient form of the promotion: retries while the target is locked.
bool ReplaceLockedFile(const std::filesystem::path& source, const std::filesystem::path& target,
                       std::wstring& error, const SUnlockWait& wait = {});

}  // namespace patch
