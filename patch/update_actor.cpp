#include "patch/update_actor.h"

#include <system_error>
#include <utility>

namespace patch {

namespace {

// Lives on the waiting caller's stack for one PostAndWait call.
struct SCompletion {
  std::mutex mutex;
  std::condition_variable finished;
  bool done = false;

  void Signal() {
    std::lock_guard lock(mutex);
    done = true;
    // Woken while still locked: once the waiter can see `done` it may return
    // and destroy this record, so nothing here may be touched after unlocking.
    finished.notify_one();
  }

  void Wait() {
    std::unique_lock lock(mutex);
    finished.wait(lock, [this] { return done; });
  }
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

  SCompletion completion;
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
    wake_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
    // Queued tasks run even after a stop request: the worker only ends empty.
    if (queue_.empty()) break;
    {
      Task task = std::move(queue_.front());
      queue_.pop_front();
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
