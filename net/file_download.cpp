// CHttpClient::DownloadFile: a resumable download into a partial file, moved
// onto its target once complete. The partial file survives failed attempts
// and restarts, so a large download continues from its last byte.
#include <algorithm>
#include <fstream>
#include <ios>
#include <memory>
#include <optional>
#include <span>
#include <system_error>

#include "crypto/sha256.h"
#include "net/http_client.h"
#include "net/http_status.h"
#include "net/system_error_text.h"
#include "platform/file_replace.h"

namespace net {
namespace {

constexpr std::size_t kBufferSize = 4 * 1024 * 1024;
constexpr wchar_t kStatusErrorPrefix[] = L"HTTP file download failed with status ";
constexpr wchar_t kOpenError[] = L"Could not open target file.";
constexpr wchar_t kWriteError[] = L"Could not write target file.";
constexpr wchar_t kTooLargeError[] = L"The download was larger than expected.";
constexpr wchar_t kFinalizeErrorPrefix[] = L"Could not finalize downloaded file: ";

// Why an attempt's handler turned the body down or stopped reading it.
enum class EStopReason { None, RangeRefused, UntrustedPartial, BadStatus, OpenFailed, WriteFailed, TooLarge };

// One attempt: decides from the status where the body goes, then streams it
// through one buffer into the partial file, never past the file's cap.
class CDownloadAttempt final : public CHttpResponseHandler {
 public:
  CDownloadAttempt(const std::filesystem::path& partial, std::uint64_t offset, std::uint64_t maxBytes,
                   const DownloadProgress& progress)
      : partial_(partial), offset_(offset), maxBytes_(maxBytes), progress_(progress) {}

  bool OnResponse(const SHttpResponseFacts& facts) override {
    status_ = facts.status;
    bool appending = false;
    switch (facts.status) {
      case kStatusRangeNotSatisfiable:
        return Stop(EStopReason::RangeRefused);
      case kStatusOk:  // the server ignored the range: start over
        offset_ = 0;
        break;
      case kStatusPartialContent:
        appending = offset_ > 0;
        break;
      default:
        return Stop(EStopReason::BadStatus);
    }
    total_ = facts.contentRangeTotal ? facts.contentRangeTotal : facts.contentLength;
    // A partial file that already holds everything cannot be told apart from
    // a stale one, so it is not trusted.
    if (appending && total_ && offset_ >= *total_) return Stop(EStopReason::UntrustedPartial);
    // A partial file already past the cap is as wrong as a longer body.
    if (offset_ > maxBytes_) return Stop(EStopReason::TooLarge);

    stream_.open(partial_, std::ios::binary | (appending ? std::ios::app : std::ios::trunc));
    if (!stream_.is_open()) return Stop(EStopReason::OpenFailed);
    if (!appending) hash_.emplace();
    // Left uninitialised: the transport fills what it hands back, and zeroing
    // 4 MiB for every blob showed up in the profile of a patch.
    if (!buffer_) buffer_ = std::make_unique_for_overwrite<std::uint8_t[]>(kBufferSize);
    if (offset_ > 0) Report();
    return true;
  }

  // The cap is kept by counting what arrives, not by the Content-Length: that
  // of a compressed body says nothing about the file.
  std::span<std::uint8_t> ReadBuffer(std::size_t available) override {
    if (!buffer_) return {};
    return {buffer_.get(), RoomWithinCap(std::min(available, kBufferSize), offset_, maxBytes_)};
  }

  bool OnBodyRead(std::size_t count) override {
    if (count > maxBytes_ - offset_) return Stop(EStopReason::TooLarge);  // nothing of it is written
    // Hashed while still in the cache from the transport's copy.
    if (hash_) hash_->Feed(buffer_.get(), count);
    stream_.write(reinterpret_cast<const char*>(buffer_.get()), static_cast<std::streamsize>(count));
    if (!stream_) return Stop(EStopReason::WriteFailed);
    offset_ += count;
    Report();
    return true;
  }

  // Closes the partial file; a failed close throws as the stream library does.
  void CloseStream() {
    if (!stream_.is_open()) return;
    stream_.close();
    if (stream_.bad()) throw std::ios_base::failure("ios_base::badbit set");
    if (stream_.fail()) throw std::ios_base::failure("ios_base::failbit set");
  }

  // Keeps what was written for the next attempt, whatever the stream's state.
  void AbandonStream() {
    stream_.close();
    stream_.clear();
  }

  // The finished file's digest: from the bytes as they streamed past, or by
  // reading the file when this attempt only appended to an earlier part.
  void FinishDigest(const std::filesystem::path& target, SDownloadResult& result) {
    if (hash_) {
      hash_->Finish(result.digest, result.digestError);
    } else {
      crypto::HashFileSha256(target, result.digest, result.digestError);
    }
  }

  void ReportComplete() const {
    if (progress_ && total_) progress_(*total_, *total_);
  }

  EStopReason stopReason() const { return stopReason_; }
  std::uint32_t status() const { return status_; }

 private:
  bool Stop(EStopReason reason) {
    stopReason_ = reason;
    return false;
  }

  void Report() const {
    if (progress_) progress_(offset_, total_.value_or(offset_));
  }

  const std::filesystem::path& partial_;
  std::uint64_t offset_;
  const std::uint64_t maxBytes_;
  const DownloadProgress& progress_;
  std::optional<std::uint64_t> total_;
  std::uint32_t status_ = 0;
  EStopReason stopReason_ = EStopReason::None;
  std::ofstream stream_;
  std::unique_ptr<std::uint8_t[]> buffer_;
  std::optional<crypto::CSha256FileStream> hash_;
};

void CreateParentFolders(const std::filesystem::path& file) {
  if (file.has_parent_path()) std::filesystem::create_directories(file.parent_path());
}

std::uint64_t ExistingSize(const std::filesystem::path& file) {
  std::error_code ec;
  const auto size = std::filesystem::file_size(file, ec);
  return ec ? 0 : size;
}

void RemoveFile(const std::filesystem::path& file) {
  std::error_code ec;
  std::filesystem::remove(file, ec);
}

// Moves the finished partial file onto the target; a target that refuses to
// be replaced (read-only) is deleted first and the move tried once more.
bool Finalize(const std::filesystem::path& partial, const std::filesystem::path& target, std::wstring& error) {
  std::uint32_t firstError = 0;
  if (platform::MoveReplacingFile(partial, target, firstError)) return true;
  std::uint32_t code = firstError;
  std::error_code ec;
  if (std::filesystem::exists(target, ec)) {
    std::uint32_t ignored = 0;
    platform::DeleteReadOnlyFile(target, ignored);
    std::uint32_t secondError = 0;
    if (platform::MoveReplacingFile(partial, target, secondError)) return true;
    if (secondError != 0) code = secondError;
  }
  error = kFinalizeErrorPrefix + SystemErrorText(code);
  return false;
}

}  // namespace

SDownloadResult CHttpClient::DownloadFile(const std::wstring& url, const std::filesystem::path& target,
                                          const std::filesystem::path& partial, std::uint64_t maxBytes,
                                          const DownloadProgress& progress) const {
  SDownloadResult result;
  for (int attempt = 0; attempt < config_.httpAttempts; ++attempt) {
    CreateParentFolders(target);
    CreateParentFolders(partial);

    SHttpRequest request;
    request.rangeStart = ExistingSize(partial);
    result.status = 0;
    if (!ParseHttpUrl(url, request.url, result.error)) continue;

    CDownloadAttempt download(partial, request.rangeStart, maxBytes, progress);
    std::wstring systemError;
    const ETransferOutcome outcome = PerformHttpGet(config_, request, download, systemError);
    result.status = download.status();

    switch (download.stopReason()) {
      case EStopReason::RangeRefused:
        RemoveFile(partial);
        result.error.clear();
        continue;
      case EStopReason::UntrustedPartial:
        RemoveFile(partial);
        continue;
      case EStopReason::BadStatus:
        result.error = kStatusErrorPrefix + std::to_wstring(download.status()) + L".";
        continue;
      case EStopReason::OpenFailed:
        result.error = kOpenError;
        return result;
      case EStopReason::WriteFailed:
        download.AbandonStream();
        result.error = kWriteError;
        continue;
      case EStopReason::TooLarge:
        // Another attempt would bring as much again.
        download.AbandonStream();
        RemoveFile(partial);
        result.error = kTooLargeError;
        result.tooLarge = true;
        return result;
      case EStopReason::None:
        break;
    }
    if (outcome != ETransferOutcome::Completed) {
      download.AbandonStream();
      result.error = systemError;
      continue;
    }
    download.CloseStream();
    if (!Finalize(partial, target, result.error)) continue;
    download.FinishDigest(target, result);
    download.ReportComplete();
    result.ok = true;
    result.error.clear();
    return result;
  }
  return result;
}

}  // namespace net
