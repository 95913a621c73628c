#pragma once
// The progress figures of one apply run, shared by its fetch workers. Every
// report goes through one mutex, so the caller's callback is never entered by
// two threads at once.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>

#include "patch/patch_progress.h"

namespace patch {

class CApplyProgress {
 public:
  using Callback = std::function<void(const SPatchProgress&)>;

  // `callback` may be empty and must outlive this object.
  explicit CApplyProgress(const Callback& callback) : callback_(callback) {}

  // Phase 1 for the entry at `index` of `count`.
  void ReportPreparing(std::uint64_t index, std::uint64_t count, const std::wstring& path);
  // Phase 6 with the fraction full.
  void ReportUpToDate();

  // Sets the totals and starts the clock the speed is measured from.
  void BeginFetch(std::uint64_t bytesTotal, std::uint64_t filesTotal);
  void AddBytes(std::uint64_t count) { bytesDone_.fetch_add(count); }
  // A file fetched other than whole: `planned` bytes of the total become `instead`.
  void ExpectInstead(std::uint64_t planned, std::uint64_t instead) { bytesTotal_.fetch_add(instead - planned); }
  void CountAppliedFile() { filesDone_.fetch_add(1); }
  // Phases 4 and 5, filled from the shared counters.
  void ReportFetch(std::uint32_t phase, const wchar_t* status);

 private:
  void Deliver(const SPatchProgress& report);

  const Callback& callback_;
  std::mutex callbackMutex_;
  std::atomic<std::uint64_t> bytesDone_{0};
  std::atomic<std::uint64_t> filesDone_{0};
  std::atomic<std::uint64_t> bytesTotal_{0};  // unsigned wrap-around keeps ExpectInstead exact
  std::uint64_t filesTotal_ = 0;
  std::chrono::steady_clock::time_point fetchStart_;
};

}  // namespace patch
