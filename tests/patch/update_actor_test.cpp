#include "patch/update_actor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace {

using patch::CUpdateActor;

// Holds the worker inside a task until the test has queued what it needs.
class CGate {
 public:
  void Open() {
    std::lock_guard lock(mutex_);
    open_ = true;
    opened_.notify_all();
  }
  void WaitOpen() {
    std::unique_lock lock(mutex_);
    opened_.wait(lock, [this] { return open_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable opened_;
  bool open_ = false;
};

TEST(UpdateActor, RunsTasksInPostingOrderOnOneWorkerThread) {
  CUpdateActor actor;
  actor.Start();
  actor.Start();  // already running: must not start a second worker

  constexpr int kTasks = 50;
  std::vector<int> order;
  std::vector<std::thread::id> threads;
  for (int i = 0; i < kTasks; ++i) {
    auto record = [&, i] {
      order.push_back(i);
      threads.push_back(std::this_thread::get_id());
    };
    if (i % 5 == 4) {
      actor.PostAndWait(record);
    } else {
      actor.Post(record);
    }
    // Empty callables are ignored, never run on the worker.
    actor.Post(nullptr);
    actor.PostAndWait(CUpdateActor::Task{});
  }

  ASSERT_EQ(order.size(), static_cast<size_t>(kTasks));
  for (int i = 0; i < kTasks; ++i) {
    EXPECT_EQ(order[i], i);
    EXPECT_EQ(threads[i], threads[0]);
  }
  EXPECT_NE(threads[0], std::this_thread::get_id());
}

TEST(UpdateActor, WithoutRunningWorkerWaitedTasksRunInlineAndPostedOnesAreDropped) {
  const struct {
    const char* state;
    void (*prepare)(CUpdateActor&);
  } cases[] = {
      {"never started", [](CUpdateActor&) {}},
      {"stopped", [](CUpdateActor& a) { a.Start(); a.Stop(); }},
      {"stopped twice", [](CUpdateActor& a) { a.Start(); a.Stop(); a.Stop(); }},
      {"started again after stop", [](CUpdateActor& a) { a.Start(); a.Stop(); a.Start(); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.state);
    CUpdateActor actor;
    c.prepare(actor);

    bool droppedRan = false;
    actor.Post([&] { droppedRan = true; });
    std::thread::id ranOn;
    actor.PostAndWait([&] { ranOn = std::this_thread::get_id(); });
    EXPECT_EQ(ranOn, std::this_thread::get_id());
    actor.Post(nullptr);
    actor.PostAndWait(nullptr);

    // A wrongly queued task would run here, when a worker drains the queue.
    actor.Start();
    actor.Stop();
    EXPECT_FALSE(droppedRan);
  }
}

TEST(UpdateActor, NestedPostAndWaitRunsInlineOnTheWorker) {
  CUpdateActor actor;
  actor.Start();
  std::vector<std::string> steps;
  std::thread::id outer;
  std::thread::id inner;
  actor.PostAndWait([&] {
    outer = std::this_thread::get_id();
    steps.push_back("outer begins");
    actor.PostAndWait([&] {
      inner = std::this_thread::get_id();
      steps.push_back("inner");
      actor.PostAndWait([&] { steps.push_back("innermost"); });
    });
    steps.push_back("outer ends");
  });
  EXPECT_EQ(steps, (std::vector<std::string>{"outer begins", "inner", "innermost", "outer ends"}));
  EXPECT_EQ(inner, outer);
  EXPECT_NE(outer, std::this_thread::get_id());
}

TEST(UpdateActor, StopFromInsideTaskFailsWithDeadlockErrorAndQueuedTasksStillRun) {
  CUpdateActor actor;
  actor.Start();
  CGate gate;
  std::error_code stopError;
  actor.Post([&] {
    gate.WaitOpen();
    try {
      actor.Stop();
    } catch (const std::system_error& e) {
      stopError = e.code();
    }
  });
  // Queued before the stop request, run after it.
  constexpr int kQueued = 20;
  int counted = 0;
  for (int i = 0; i < kQueued; ++i) actor.Post([&] { ++counted; });
  bool latePostRan = false;
  actor.Post([&] { actor.Post([&] { latePostRan = true; }); });
  gate.Open();
  actor.Stop();

  EXPECT_EQ(stopError, std::make_error_code(std::errc::resource_deadlock_would_occur));
  EXPECT_EQ(counted, kQueued);
  EXPECT_FALSE(latePostRan);  // posted while stopping
}

TEST(UpdateActor, DestructionStopsAfterRunningQueuedTasks) {
  constexpr int kQueued = 100;
  int counted = 0;
  {
    CUpdateActor actor;
    actor.Start();
    for (int i = 0; i < kQueued; ++i) actor.Post([&] { ++counted; });
  }
  EXPECT_EQ(counted, kQueued);
}

TEST(UpdateActor, ConcurrentPostersEachTaskRunsOnceInItsPostersOrder) {
  constexpr int kPosters = 6;
  constexpr int kTasksEach = 300;
  CUpdateActor actor;
  actor.Start();
  // Touched only by tasks, which the actor serialises.
  std::vector<std::vector<int>> runs(kPosters, std::vector<int>(kTasksEach, 0));
  std::vector<int> lastSeen(kPosters, -1);
  int outOfOrder = 0;

  std::vector<std::thread> posters;
  for (int p = 0; p < kPosters; ++p) {
    posters.emplace_back([&, p] {
      for (int i = 0; i < kTasksEach; ++i) {
        auto task = [&, p, i] {
          ++runs[p][i];
          if (i <= lastSeen[p]) ++outOfOrder;
          lastSeen[p] = i;
        };
        if (i % 3 == 0) {
          actor.PostAndWait(task);
        } else {
          actor.Post(task);
        }
      }
    });
  }
  for (auto& t : posters) t.join();
  actor.Stop();

  EXPECT_EQ(outOfOrder, 0);
  for (int p = 0; p < kPosters; ++p) {
    for (int i = 0; i < kTasksEach; ++i) ASSERT_EQ(runs[p][i], 1) << "poster " << p << " task " << i;
  }
}

// Guards against lost wake-ups between the worker and waiting callers.
TEST(UpdateActor, ThousandsOfWaitedCallsFromSeveralThreadsAllReturnAfterTheirTask) {
  constexpr int kCallers = 3;
  constexpr int kCallsEach = 800;
  CUpdateActor actor;
  actor.Start();
  long total = 0;
  std::atomic<int> returnedEarly{0};

  std::vector<std::thread> callers;
  for (int c = 0; c < kCallers; ++c) {
    callers.emplace_back([&] {
      for (int i = 0; i < kCallsEach; ++i) {
        bool ran = false;
        actor.PostAndWait([&] {
          ran = true;
          ++total;
        });
        if (!ran) ++returnedEarly;
      }
    });
  }
  for (auto& t : callers) t.join();

  long seen = 0;
  actor.PostAndWait([&] { seen = total; });
  EXPECT_EQ(seen, kCallers * kCallsEach);
  EXPECT_EQ(returnedEarly.load(), 0);
}

TEST(UpdateActor, StopWhileCallersWaitLeavesNoCallerHanging) {
  constexpr int kCallers = 3;
  constexpr int kCallsEach = 500;
  CUpdateActor actor;
  actor.Start();
  // Atomic: once stopping, inline tasks on callers may overlap the worker's last ones.
  std::atomic<int> ran{0};

  std::vector<std::thread> callers;
  for (int c = 0; c < kCallers; ++c) {
    callers.emplace_back([&] {
      for (int i = 0; i < kCallsEach; ++i) actor.PostAndWait([&] { ++ran; });
    });
  }
  while (ran.load() < 100) std::this_thread::yield();
  actor.Stop();
  for (auto& t : callers) t.join();
  EXPECT_EQ(ran.load(), kCallers * kCallsEach);
}

}  // namespace
