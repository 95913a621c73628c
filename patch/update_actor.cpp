#include "patch/update_actor.h"

#include <chrono>
#include <system_error>
#include <utility>

namespace patch {

namespace {

// Most tasks are a map lookup that takes a microsecond or two, while putting
// a thread to sleep and waking it costs several: both sides first watch for
// the other briefly before they block. Watching yields the processor rather
// than spinning, so when the two threads share a core (a busy machine) the
// one being waited for runs at once; the bound keeps an idle actor from
// holding a core for longer than a blink.
constexpr auto kWatchLimit = std::chrono::microseconds(50);
constexpr int kYieldsPerClockRead = 8;

// True once `ready` holds; false when the watch limit ran out first.
template <typename Predicate>
bool WatchBriefly(Predicate ready) {
  const auto deadline = std::chrono::steady_clock::now() + kWatchLimit;
  for (;;) {
    for (int i = 0; i < kYieldsPerClockRead; ++i) {
      if (ready()) return true;
      std::this_thread::yield();
    }
    if (std::chrono::steady_clock::now() >= deadline) return ready();
  }
}

// Lives on the waiting caller's stack for one PostAndWait call.
class CCompletion {
 public:
  void Signal() {
    EState expected = EState::Pending;
    // A waiter still watching sees the flag and may return (destroying this
    // record) at once, so nothing here may be touched after the exchange.
    if (state_.compare_exchange_strong(expected, EState::Done, std::memory_order_release,
                                       std::memory_order_relaxed)) {
      return;
    }
    // The waiter sleeps: it can only leave its wait holding the mutex, and
    // it is woken while the mutex is still held here.
    std::lock_guard lock(mutex_);
    state_.store(EState::Done, std::memory_order_release);
    finished_.notify_one();
  }

  void Wait() {
    if (WatchBriefly([this] { return IsDone(); })) return;
    std::unique_lock lock(mutex_);
    EState expected = EState::Pending;
    if (!state_.compare_exchange_strong(expected, EState::Sleeping, std::memory_order_acquire)) return;
    finished_.wait(lock, [this] { return IsDone(); });
  }

 private:
  enum class EState { Pending, Sleeping, Done };

  bool IsDone() const { return state_.load(std::memory_order_acquire) == EState::Done; }

  std::mutex mutex_;
  std::condition_variable finished_;
  std::atomic<EState> state_{EState::Pending};
};

}  // namespace

CUpdateActor::~CUpdateActor() { Stop(); }

void CUpdateActor::Start() {
  std::lock_guard lock(mutex_);
  if (running_) return;
  // The thread is created first so a failed creation leaves the actor not
  // running (and PostAndWait still inline) rather than waiting forever.
  worker_ = std::thread(&CUpdateActor::RunLoop, this);
  running_ = true;
}

void CUpdateActor::PostAndWait(Task task) {
  if (!task) return;
  if (IsWorkerThread()) {
    task();
    return;
  }

  CCompletion completion;
  {
    std::unique_lock lock(mutex_);
    if (!running_ || stopping_) {
      task();
      return;
    }
    queue_.push_back([task = &task, completion = &completion] {
      (*task)();
      completion->Signal();
    });
    queued_.store(queue_.size(), std::memory_order_release);
  }
  wake_.notify_one();
  completion.Wait();
}

void CUpdateActor::Post(Task task) {
  if (!task) return;
  {
    std::lock_guard lock(mutex_);
    if (!running_ || stopping_) return;
    queue_.push_back(std::move(task));
    queued_.store(queue_.size(), std::memory_order_release);
  }
  wake_.notify_one();
}

void CUpdateActor::Stop() {
  {
    std::lock_guard lock(mutex_);
    if (!running_) return;
    stopping_ = true;
  }
  wake_.notify_all();

  if (worker_.joinable()) {
    if (IsWorkerThread()) {
      throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
    }
    worker_.join();
  }

  std::lock_guard lock(mutex_);
  running_ = false;
}

void CUpdateActor::RunLoop() {
  workerId_ = std::this_thread::get_id();
  std::unique_lock lock(mutex_);
  for (;;) {
    if (queue_.empty() && !stopping_) {
      lock.unlock();
      WatchBriefly([this] { return queued_.load(std::memory_order_acquire) != 0; });
      lock.lock();
    }
    wake_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
    // Queued tasks run even after a stop request: the worker only ends empty.
    if (queue_.empty()) break;
    {
      Task task = std::move(queue_.front());
      queue_.pop_front();
      queued_.store(queue_.size(), std::memory_order_relaxed);
      lock.unlock();
      task();
    }  // destroyed before relocking, so a task's captures never die under the lock
    lock.lock();
  }
  workerId_ = std::thread::id();
}

bool CUpdateActor::IsWorkerThread() const {
  return workerId_.load() == std::this_thread::get_id();
}

}  // namespace patch
