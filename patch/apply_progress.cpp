#include "patch/apply_progress.h"

#include <algorithm>

namespace patch {
namespace {

constexpr std::uint32_t kPhasePreparing = 1;
constexpr std::uint32_t kPhaseUpToDate = 6;

}  // namespace

void CApplyProgress::ReportPreparing(std::uint64_t index, std::uint64_t count, const std::wstring& path) {
  if (!callback_) return;
  SPatchProgress report;
  report.phase = kPhasePreparing;
  report.status = L"Preparing patch";
  report.file = path;
  report.filesDone = index;
  report.filesTotal = count;
  Deliver(report);
}

void CApplyProgress::ReportUpToDate() {
  if (!callback_) return;
  SPatchProgress report;
  report.phase = kPhaseUpToDate;
  report.fraction = 1.0f;
  report.status = L"Up to date";
  Deliver(report);
}

void CApplyProgress::BeginFetch(std::uint64_t bytesTotal, std::uint64_t filesTotal) {
  bytesTotal_ = bytesTotal;
  filesTotal_ = filesTotal;
  fetchStart_ = std::chrono::steady_clock::now();
}

void CApplyProgress::ReportFetch(std::uint32_t phase, const wchar_t* status) {
  if (!callback_) return;
  // The counters are read under the lock too, so reports never go backwards.
  const std::lock_guard lock(callbackMutex_);
  SPatchProgress report;
  report.phase = phase;
  report.status = status;
  // Retried transfers count their bytes again; the figure never passes the total.
  report.bytesTotal = bytesTotal_.load();
  report.bytesDone = std::min(bytesDone_.load(), report.bytesTotal);
  report.fraction = report.bytesTotal == 0 ? 0.0f
                                           : static_cast<float>(static_cast<double>(report.bytesDone) /
                                                                static_cast<double>(report.bytesTotal));
  report.filesDone = filesDone_.load();
  report.filesTotal = filesTotal_;
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - fetchStart_).count();
  report.speedMbps = seconds > 0.0 ? static_cast<double>(report.bytesDone) * 8.0 / seconds / 1000000.0 : 0.0;
  callback_(report);
}

void CApplyProgress::Deliver(const SPatchProgress& report) {
  const std::lock_guard lock(callbackMutex_);
  callback_(report);
}

}  // namespace patch
