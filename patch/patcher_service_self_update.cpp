// Launcher self-update: the published launcher is downloaded as a content
// blob, checked against its signed digest, kept under a versioned name and
// started with the switch that makes it take this launcher's place.
#include <filesystem>
#include <string>
#include <system_error>

#include "log/log.h"
#include "net/http_client.h"
#include "patch/blob_path.h"
#include "patch/patcher_service.h"
#include "patch/staged_promotion.h"
#include "patch/version_order.h"
#include "platform/path_text.h"
#include "platform/process_start.h"

namespace patch {
namespace {

constexpr std::wstring_view kLogCategory = L"self-update";
constexpr std::wstring_view kUpdateFolderName = L"launcher_update";
constexpr std::wstring_view kUpdateFilePrefix = L"VardeniLauncher-";
constexpr std::wstring_view kUpdateFileSuffix = L".exe";

bool CreateFolder(const std::filesystem::path& folder, std::wstring& errorText) {
  std::error_code ec;
  std::filesystem::create_directories(folder, ec);
  if (!ec) return true;
  errorText = L"failed to create " + platform::FromPath(folder);
  return false;
}

// Downloads onto `staged`, no larger than `size`; `digest` is then the SHA-256
// of what arrived, or empty when more than `size` bytes did.
bool DownloadBlob(const net::CHttpClient& http, const std::wstring& url, const std::filesystem::path& staged,
                  const std::filesystem::path& partial, std::uint64_t size, std::wstring& digest,
                  std::wstring& errorText) {
  if (!CreateFolder(staged.parent_path(), errorText)) return false;
  try {
    const net::SDownloadResult result = http.DownloadFile(url, staged, partial, size, {});
    digest = result.digest;
    errorText = result.ok ? result.digestError : result.error;
    return (result.ok || result.tooLarge) && result.digestError.empty();
  } catch (const std::exception& failure) {
    // Closing the finished partial file failed: the disk refused the last bytes.
    const std::string what = failure.what();
    errorText = L"Could not write target file: " + std::wstring(what.begin(), what.end());
    return false;
  }
}

// A plain rename, or a copy when that fails (an older file of that name may
// be in the way); the staged blob is gone either way on success.
bool MoveIntoPlace(const std::filesystem::path& staged, const std::filesystem::path& target,
                   std::wstring& errorText) {
  if (!PrepareStagedPromotion(staged, target, errorText)) return false;
  std::error_code ec;
  std::filesystem::rename(staged, target, ec);
  if (!ec) return true;
  if (!PromoteStagedFile(staged, target, errorText)) return false;
  std::filesystem::remove(staged, ec);
  return true;
}

}  // namespace

bool CPatcherService::MaybeStartLauncherSelfUpdate(const net::CHttpClient& http, const SManifest& manifest) {
  if (!manifest.hasLauncher || !IsNewerVersion(manifest.launcherProductVersion, config_.launcherVersion)) {
    return false;
  }
  // Tried in an earlier run: a build that cannot take over is never retried.
  if (GetStateSnapshot().attemptedLauncherVersion == manifest.launcherProductVersion) return false;
  bool alreadyHandled = false;
  actor_.PostAndWait([&] {
    alreadyHandled = selfUpdateStarted_ || failedLauncherSha256_ == manifest.launcherSha256;
  });
  if (alreadyHandled) return false;

  std::wstring errorText;
  const bool started = StageAndLaunchUpdate(http, manifest, errorText);
  actor_.PostAndWait([&] {
    if (started) {
      selfUpdateStarted_ = true;
    } else {
      failedLauncherSha256_ = manifest.launcherSha256;
    }
  });
  if (started) {
    logging::LogInfo(kLogCategory, L"started launcher " + manifest.launcherProductVersion);
  } else {
    logging::LogWarning(kLogCategory, L"launcher " + manifest.launcherProductVersion + L" not started: " + errorText);
  }
  return started;
}

bool CPatcherService::StageAndLaunchUpdate(const net::CHttpClient& http, const SManifest& manifest,
                                           std::wstring& errorText) {
  if (!manifest.hasLauncher) {
    errorText = L"The update list names no launcher.";
    return false;
  }
  if (!IsNewerVersion(manifest.launcherProductVersion, config_.launcherVersion)) {
    errorText = L"The published launcher is not newer than this one.";
    return false;
  }
  const std::wstring blobPath = BlobPathForHash(manifest.launcherSha256);
  if (blobPath.empty()) {
    errorText = L"The update list names a malformed launcher digest.";
    return false;
  }
  const std::filesystem::path runtime = platform::ToPath(folders_.runtimeFolder);
  const std::filesystem::path stagingRoot = StagingRoot(runtime);
  const std::filesystem::path staged = StagedBlobPath(stagingRoot, manifest.launcherSha256);
  std::wstring digest;
  if (!DownloadBlob(http, BuildPatchUrl(blobPath, false), staged, PartialBlobPath(stagingRoot, manifest.launcherSha256),
                    manifest.launcherSize, digest, errorText)) {
    return false;
  }
  if (digest != manifest.launcherSha256) {
    std::error_code ec;
    std::filesystem::remove(staged, ec);
    errorText = L"The downloaded launcher did not match its signed hash.";
    return false;
  }

  const std::filesystem::path updateFolder = runtime / platform::ToPath(kUpdateFolderName);
  const std::filesystem::path target =
      updateFolder / platform::ToPath(std::wstring(kUpdateFilePrefix) + manifest.launcherProductVersion +
                                      std::wstring(kUpdateFileSuffix));
  if (!CreateFolder(updateFolder, errorText) || !MoveIntoPlace(staged, target, errorText)) return false;
  // A downloaded file carries no execute permission where that matters; elsewhere this changes nothing.
  std::error_code permissionError;
  std::filesystem::permissions(target, std::filesystem::perms::owner_exec | std::filesystem::perms::group_exec,
                               std::filesystem::perm_options::add, permissionError);

  // Recorded before the start, so a build that crashes or never takes over is
  // not tried again on the next start.
  MutateState([&](SPatchState& state) { state.attemptedLauncherVersion = manifest.launcherProductVersion; });
  std::wstring ignoredSaveError;
  SaveState(ignoredSaveError);

  platform::SProcessStart request;
  request.executable = platform::FromPath(target);
  request.arguments = {std::wstring(kApplySelfUpdateSwitch), folders_.launcherPath};
  request.workingDirectory = platform::FromPath(updateFolder);
  request.newProcessGroup = true;
  std::uint32_t startError = 0;
  if (!platform::StartProcess(request, startError)) {
    errorText = L"Could not start launcher self-update process. (error " + std::to_wstring(startError) + L")";
    return false;
  }
  errorText.clear();
  return true;
}

}  // namespace patch
