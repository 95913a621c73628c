#pragma once
// One worker thread that owns the patcher service's mutable state. Every read
// or change of that state is posted here as a closure and runs on this thread,
// one at a time, in posting order, so the state itself needs no lock.
//
// Callers either wait for their closure (PostAndWait) or hand it over and go
// on (Post). The worker is started explicitly, not by the constructor, and
// drains every queued closure before it ends. Tasks must not let an exception
// escape on the worker: nothing there catches it.

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace patch {

class CUpdateActor {
 public:
  using Task = std::function<void()>;

  CUpdateActor() = default;
  ~CUpdateActor();

  CUpdateActor(const CUpdateActor&) = delete;
  CUpdateActor& operator=(const CUpdateActor&) = delete;

  // Starts the worker; does nothing while one already runs.
  void Start();

  // Runs the task on the worker and returns once it has finished. Results
  // travel back through the caller's variables captured by reference. Before
  // Start, while stopping and after Stop the task runs at once on the calling
  // thread (holding the actor's lock, so it must not post to this actor). From
  // inside a task it runs inline, so nested calls cannot deadlock.
  void PostAndWait(Task task);

  // Queues the task and returns at once. Dropped unrun before Start, while
  // stopping and after Stop.
  void Post(Task task);

  // Runs every queued task, then ends and joins the worker. A stopped actor
  // stays stopped. Throws std::system_error with
  // std::errc::resource_deadlock_would_occur when called from inside a task.
  void Stop();

 private:
  void RunLoop();
  bool IsWorkerThread() const;

  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<Task> queue_;
  // The queue's length, also readable without the lock: the idle worker
  // watches it for a moment before it sleeps on `wake_`.
  std::atomic<std::size_t> queued_{0};
  std::thread worker_;
  // Written by the worker itself; read without the lock to recognise calls
  // made from inside a task. A default id (no thread) while no loop runs.
  std::atomic<std::thread::id> workerId_{};
  bool running_ = false;
  bool stopping_ = false;
};

}  // namespace patch
