#include "patch/update_actor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace {

using patch::CUpdateActor;

TEST(UpdateActor, WithoutRunningWorkerWaitedTasksRunInlineAndPostedOnesAreDropped) {
  const struct {
    const char* state;
    void (*prepare)(CUpdateActor&);
  } cases[] = {
      {"never started", [](CUpdateActor&) {}},
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
    });
    steps.push_back("outer ends");
  });
  EXPECT_EQ(steps, (std::vector<std::string>{"outer begins", "inner", "outer ends"}));
  EXPECT_EQ(inner, outer);
  EXPECT_NE(outer, std::this_thread::get_id());
}

TEST(UpdateActor, StopFromInsideTaskFailsWithDeadlockErrorAndQueuedTasksStillRun) {
  CUpdateActor actor;
  actor.Start();
  std::atomic<bool> open{false};  // holds the worker until everything below is queued
  std::error_code stopError;
  actor.Post([&] {
    while (!open) std::this_thread::yield();
    try {
      actor.Stop();
    } catch (const std::system_error& e) {
      stopError = e.code();
    }
  });
  int counted = 0;
  for (int i = 0; i < 20; ++i) actor.Post([&] { ++counted; });
  bool latePostRan = false;
  actor.Post([&] { actor.Post([&] { latePostRan = true; }); });
  open = true;
  actor.Stop();

  EXPECT_EQ(stopError, std::make_error_code(std::errc::resource_deadlock_would_occur));
  EXPECT_EQ(counted, 20);
  EXPECT_FALSE(latePostRan);  // posted while stopping
}

// Also guards against lost wake-ups: a waited call must never return before its task ran.
TEST(UpdateActor, ConcurrentPostersEachTaskRunsOnceInItsPostersOrderOnOneWorker) {
  constexpr int kPosters = 4;
  constexpr int kTasksEach = 600;
  CUpdateActor actor;
  actor.Start();
  actor.Start();  // already running: must not start a second worker
  // Touched only by tasks, which the actor serialises. A task run twice or
  // out of order shows as a step that is not exactly one up.
  std::set<std::thread::id> workers;
  std::vector<int> lastSeen(kPosters, -1);
  int outOfOrder = 0;
  std::atomic<int> returnedEarly{0};

  std::vector<std::thread> posters;
  for (int p = 0; p < kPosters; ++p) {
    posters.emplace_back([&, p] {
      for (int i = 0; i < kTasksEach; ++i) {
        auto task = [&, p, i] {
          workers.insert(std::this_thread::get_id());
          if (i != lastSeen[p] + 1) ++outOfOrder;
          lastSeen[p] = i;
        };
        actor.Post(nullptr);  // empty callables are ignored
        if (i % 2 == 0) {
          actor.Post(task);
          continue;
        }
        bool done = false;
        actor.PostAndWait([&] {
          task();
          done = true;
        });
        if (!done) ++returnedEarly;
      }
    });
  }
  for (auto& t : posters) t.join();
  actor.Stop();

  EXPECT_EQ(outOfOrder, 0);
  EXPECT_EQ(returnedEarly.load(), 0);
  ASSERT_EQ(workers.size(), 1u);
  EXPECT_EQ(workers.count(std::this_thread::get_id()), 0u);
  EXPECT_EQ(lastSeen, std::vector<int>(kPosters, kTasksEach - 1));
}

TEST(UpdateActor, StopWhileCallersWaitLeavesNoCallerHanging) {
  CUpdateActor actor;
  actor.Start();
  // Atomic: once stopping, inline tasks on callers may overlap the worker's last ones.
  std::atomic<int> ran{0};
  std::vector<std::thread> callers;
  for (int c = 0; c < 3; ++c) {
    callers.emplace_back([&] {
      for (int i = 0; i < 500; ++i) actor.PostAndWait([&] { ++ran; });
    });
  }
  while (ran.load() < 100) std::this_thread::yield();
  actor.Stop();
  for (auto& t : callers) t.join();
  EXPECT_EQ(ran.load(), 1500);
}

}  // namespace
