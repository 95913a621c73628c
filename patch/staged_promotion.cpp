#include "patch/staged_promotion.h"

#include <cstdint>
#include <system_error>
#include <thread>

#include "patch/blob_path.h"
#include "platform/file_copy.h"
#include "platform/file_replace.h"
#include "platform/folder_create.h"
#include "platform/path_text.h"

namespace patch {
namespace {

namespace fs = std::filesystem;

constexpr wchar_t kPromoteSuffix[] = L".promote.tmp";

std::wstring Text(const fs::path& path) { return platform::FromPath(path); }

// Error codes are reported as the signed value the OS call returned.
std::wstring CodeText(std::uint32_t code) { return std::to_wstring(static_cast<std::int32_t>(code)); }

fs::path PromotionTemporary(const fs::path& target) {
  return target.parent_path() / platform::ToPath(Text(target.filename()) + kPromoteSuffix);
}

void RemoveQuietly(const fs::path& path) {
  std::uint32_t ignoredCode = 0;
  platform::DeleteReadOnlyFile(path, ignoredCode);
}

}  // namespace

fs::path StagingRoot(const fs::path& runtimeFolder) { return runtimeFolder / "staging"; }

fs::path StagedBlobPath(const fs::path& stagingRoot, const std::wstring& sha256) {
  if (!IsSha256Hex(sha256)) return {};
  return stagingRoot / platform::ToPath(sha256.substr(0, 2)) / platform::ToPath(sha256);
}

fs::path PartialBlobPath(const fs::path& stagingRoot, const std::wstring& sha256) {
  const fs::path staged = StagedBlobPath(stagingRoot, sha256);
  if (staged.empty()) return {};
  return platform::ToPath(Text(staged) + L".part");
}

bool PrepareStagedPromotion(const fs::path& staged, const fs::path& target, std::wstring& error) {
  std::error_code ec;
  if (!fs::is_regular_file(staged, ec)) {
    error = L"staged file is missing: " + Text(staged);
    return false;
  }
  const fs::path parent = target.parent_path();
  if (!platform::CreateFolders(parent)) {
    error = L"failed to create " + Text(parent);
    return false;
  }
  return true;
}

bool PromoteStagedFile(const fs::path& staged, const fs::path& target, std::wstring& error) {
  const fs::path temporary = PromotionTemporary(target);
  std::uint32_t code = 0;
  if (!platform::CopyFileReplacing(staged, temporary, code)) {
    error = L"failed to replace " + Text(target) + L": copy " + CodeText(code);
    return false;
  }
  if (!platform::MoveReplacingFile(temporary, target, code)) {
    RemoveQuietly(temporary);
    error = L"failed to replace " + Text(target) + L": " + CodeText(code);
    return false;
  }
  return true;
}

bool ReplaceLockedFile(const fs::path& source, const fs::path& target, std::wstring& error,
                       const SUnlockWait& wait) {
  if (source.empty() || target.empty()) {
    error = L"replacement paths are invalid";
    return false;
  }
  platform::CreateFolders(target.parent_path());

  const fs::path temporary = platform::ToPath(Text(target) + kPromoteSuffix);
  RemoveQuietly(temporary);
  std::uint32_t code = 0;
  if (!platform::CopyFileReplacing(source, temporary, code)) {
    error = L"could not stage the replacement for " + Text(target) + L": " + CodeText(code);
    return false;
  }

  for (int lockedAttempts = 1;; ++lockedAttempts) {
    if (platform::MoveReplacingFile(temporary, target, code)) return true;
    if (!platform::IsFileLockedError(code)) {
      RemoveQuietly(temporary);
      error = L"could not replace " + Text(target) + L": " + std::to_wstring(code);
      return false;
    }
    if (lockedAttempts >= wait.attempts) {
      RemoveQuietly(temporary);
      error = L"timed out waiting for " + Text(target) + L" to unlock";
      return false;
    }
    std::this_thread::sleep_for(wait.interval);
  }
}

}  // namespace patch
