#include "tools/publisher/blob_store.h"

#include <system_error>

#include "crypto/sha256.h"
#include "patch/blob_path.h"
#include "platform/file_copy.h"
#include "platform/file_replace.h"
#include "platform/move_no_replace.h"
#include "platform/path_text.h"
#include "tools/publisher/host_files.h"

namespace publisher {
namespace {

// Copies `source` to `temporary` and checks the copy against what was hashed.
bool CopyVerified(const std::filesystem::path& source, const std::filesystem::path& temporary,
                  const std::wstring& sha256, std::uint64_t size, std::wstring& error) {
  std::uint32_t code = 0;
  if (!platform::CopyFileReplacing(source, temporary, code)) {
    error = PathProblem(source, L"could not be copied to the host (error " + std::to_wstring(code) + L")");
    return false;
  }
  std::wstring digest;
  if (!crypto::HashFileSha256(temporary, digest, error)) {
    error = PathProblem(temporary, error);
    return false;
  }
  std::error_code ec;
  if (digest != sha256 || std::filesystem::file_size(temporary, ec) != size || ec) {
    error = PathProblem(source, L"changed while it was being published; publish again");
    return false;
  }
  return true;
}

}  // namespace

bool CBlobStore::HasBlob(const std::filesystem::path& target, std::uint64_t size) const {
  std::error_code ec;
  return std::filesystem::is_regular_file(target, ec) && std::filesystem::file_size(target, ec) == size && !ec;
}

std::filesystem::path CBlobStore::BlobFile(const std::wstring& sha256) const {
  return hostFolder_ / platform::ToPath(patch::BlobPathForHash(sha256));
}

bool CBlobStore::Store(const std::filesystem::path& source, const std::wstring& sha256, std::uint64_t size,
                       EBlobOutcome& outcome, std::wstring& error) const {
  error.clear();
  if (!patch::IsSha256Hex(sha256)) {
    error = L"not a SHA-256 digest: " + sha256;
    return false;
  }
  const std::filesystem::path target = BlobFile(sha256);
  std::error_code ec;
  const bool present = std::filesystem::exists(target, ec);
  if (HasBlob(target, size)) {
    outcome = EBlobOutcome::Reused;
    return true;
  }
  std::filesystem::create_directories(target.parent_path(), ec);
  if (ec) {
    error = PathProblem(target.parent_path(), L"could not be created");
    return false;
  }
  const std::filesystem::path temporary = TemporarySibling(target);
  std::uint32_t code = 0;
  bool placed = CopyVerified(source, temporary, sha256, size, error);
  if (placed && present) {
    placed = platform::MoveReplacingFile(temporary, target, code);
    outcome = EBlobOutcome::Repaired;
  } else if (placed) {
    placed = platform::MoveWithoutReplacing(temporary, target, code);
    outcome = EBlobOutcome::Written;
    // Another publisher may have placed the same bytes a moment ago.
    if (!placed && std::filesystem::file_size(target, ec) == size && !ec) {
      std::filesystem::remove(temporary, ec);
      outcome = EBlobOutcome::Reused;
      return true;
    }
  }
  if (!placed) {
    std::filesystem::remove(temporary, ec);
    if (error.empty()) error = PathProblem(target, L"could not be written (error " + std::to_wstring(code) + L")");
    return false;
  }
  return true;
}

bool CBlobStore::StoreBytes(std::string_view bytes, const std::wstring& sha256, EBlobOutcome& outcome,
                            std::wstring& error) const {
  const std::filesystem::path target = BlobFile(sha256);
  std::error_code ec;
  const bool present = std::filesystem::exists(target, ec);
  if (HasBlob(target, bytes.size())) {
    outcome = EBlobOutcome::Reused;
    return true;
  }
  std::filesystem::create_directories(target.parent_path(), ec);
  outcome = present ? EBlobOutcome::Repaired : EBlobOutcome::Written;
  return ReplaceFileAtomically(target, bytes, error);
}

}  // namespace publisher
