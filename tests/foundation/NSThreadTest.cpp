#include "platform/foundation/NSThread.h"
#include "platform/foundation/CoreFoundation.h"
#include "platform/foundation/FreeElsewhere.h"
#include "platform/foundation/MainLoop.h"
#include "platform/foundation/Perform.h"
#include "platform/foundation/ThreadTeam.h"
#include "testing/SystemCallsGuard.h"
#include "testing/VirtualClock.h"
#include "testing/WaitForThreads.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <latch>
#include <list>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>

namespace searchsystem {

namespace {

using Clock = MainRunLoop::Clock;

class NSThreadTest : public testing::Test {
protected:
  struct Job final : ThreadJob {
    Job(NSThreadTest &owner, std::function<void()> work) : body(std::move(work)), test(owner) {}
    void main() override { body(); }
    void ended() noexcept override {
      --test.running_;
      test.note("ended");
    }
    std::function<void()> body;
    NSThreadTest &test;
  };

  /// Starts a job that notes when it has ended.
  void start(std::function<void()> body) {
    ++running_;
    NSThread::detachNewThread(jobs_.emplace_back(*this, std::move(body)));
  }

  /// Runs the loop until every job has ended.
  void finishJobs() {
    while (running_ > 0) {
      const auto end = Clock::now() + std::chrono::seconds(40);
      CFRunLoopRunInMode(nullptr, 40, 1);
      EXPECT_LT(Clock::now(), end) << "work has come and the loop slept on";
    }
  }

  void note(const std::string &word) {
    const std::scoped_lock guard(lock_);
    log += MainRunLoop::shared().isMainThread() ? word + " " : "(" + word + ") ";
  }

  void noteAtExit() {
    ThreadJob::performAtExit([](void *test) { static_cast<NSThreadTest *>(test)->note("exit"); },
                             this);
  }

  const VirtualClock clock;
  std::string log;

private:
  std::mutex lock_;
  std::list<Job> jobs_;
  int running_ = 0;
};

TEST_F(NSThreadTest, JobRunsOnItsThreadAndEndsOnTheMainThread) {
  std::latch gate(1);
  performAfterDelay(0.1, [this] { note("timer"); });
  start([&] {
    gate.wait();
    noteAtExit();
    note("throws");
    throw std::runtime_error("job");
  });
  EXPECT_EQ(PFMainLoopDispatch(), 0) << "the virtual clock stands meanwhile";
  gate.count_down();
  finishJobs();
  PFMainLoopDispatch();
  EXPECT_EQ(log, "(throws) exit ended timer ");
}

TEST_F(NSThreadTest, ThreadsThatCannotBeStartedBecomeWorkOfTheLoop) {
  SystemCalls none{};
  none.startThread = [](pthread_t *, const pthread_attr_t *, void *(*)(void *), void *) {
    return EAGAIN;
  };
  const SystemCallsGuard calls(none);
  std::latch gate(1);
  // Threads of earlier tests may still be idle: they are given something to do.
  while (calls.counts().startThread == 0)
    start([&] {
      if (!MainRunLoop::shared().isMainThread())
        return gate.wait();
      noteAtExit();
      note("main");
    });
  EXPECT_EQ(log, "") << "not inside the call";
  while (log.find("ended") == log.npos)
    CFRunLoopRunInMode(nullptr, 40, 1);
  EXPECT_EQ(log.find("main "), 0U);
  EXPECT_LT(log.find("exit "), log.find("ended "));
  gate.count_down();
  finishJobs();
}

TEST_F(NSThreadTest, JobsWaitWhileTheMainThreadActsInTurns) {
  constexpr int jobs = 3, waitsOfEach = 200;
  int actions = 0;
  const auto count = [&] {
    EXPECT_TRUE(MainRunLoop::shared().isMainThread());
    return ++actions % 3 != 0;
  };
  performOnMainThreadAndWait(count);
  EXPECT_EQ(actions, 3) << "at once on the main thread";
  for (int i = 0; i < jobs; ++i)
    start([&] {
      for (int left = waitsOfEach; left > 0; --left)
        performOnMainThreadAndWait(count);
      noteAtExit();
    });
  finishJobs();
  EXPECT_GE(actions, 3 + jobs * waitsOfEach);
  EXPECT_EQ(log, "exit ended exit ended exit ended ");
}

/// A team that counts down, one task at a time, and notes what becomes of it.
class Team final : public NSObject, public ThreadTeam {
public:
  Team(int taskCount, std::size_t most) : ThreadTeam(*this, most), tasks(taskCount) {}
  ~Team() override { isGone = true; }

  static inline bool isGone;
  std::atomic<int> tasks;
  std::atomic<int> atWork{0}, mostAtWork{0}, ends{0};

private:
  bool work() noexcept override {
    const int count = ++atWork;
    for (int most = mostAtWork; count > most && !mostAtWork.compare_exchange_weak(most, count);) {
    }
    while (takeTask() && !MainRunLoop::shared().isMainThread())
      std::this_thread::yield();
    --atWork;
    return tasks > 0;
  }
  void allDone() noexcept override { ++ends; }
  bool takeTask() noexcept {
    for (int left = tasks; left > 0;)
      if (tasks.compare_exchange_weak(left, left - 1))
        return true;
    return false;
  }
};

TEST_F(NSThreadTest, ATeamDoesAllThatItIsCalledFor) {
  SystemCalls none{};
  none.startThread = [](pthread_t *, const pthread_attr_t *, void *(*)(void *), void *) {
    return EAGAIN;
  };
  for (const bool hasThreads : {true, false}) {
    std::optional<SystemCallsGuard> calls;
    if (!hasThreads)
      calls.emplace(none);
    Team::isGone = false;
    auto *const team = new Team(0, 3);
    for (int round = 0; round < 300; ++round) {
      team->tasks += 10;
      team->call(5);
      if (round % 50 == 0)
        waitForThreads();
    }
    waitForThreads();
    EXPECT_EQ(team->tasks, 0);
    EXPECT_LE(team->mostAtWork, 3);
    EXPECT_GE(team->ends, 1);
    team->tasks = 1000;
    team->call(1);
    team->release();
    waitForThreads();
    EXPECT_TRUE(Team::isGone) << "it has been kept until its threads were gone";
  }
}

TEST_F(NSThreadTest, WorkThatAJobPostsRunsWhileAllJobsAreStuck) {
  std::latch gate(1), others(63);
  for (int i = 0; i < 63; ++i)
    start([&] {
      others.count_down();
      gate.wait();
    });
  start([&] {
    others.wait();
    // The main thread has time to fall asleep.
    performOnMainThreadAndWait([] { return false; });
    for (const auto end = Clock::now() + std::chrono::milliseconds(5); Clock::now() < end;)
      std::this_thread::yield();
    performOnMainThread([&] { gate.count_down(); });
    gate.wait();
  });
  finishJobs();
}

TEST_F(NSThreadTest, ManyThingsAreFreedElsewhere) {
  static std::atomic<int> freed, freedOnMainThread;
  freed = freedOnMainThread = 0;
  struct Thing {
    ~Thing() {
      ++freed;
      freedOnMainThread += MainRunLoop::shared().isMainThread() ? 1 : 0;
    }
  };
  std::list<Thing> few(1), many(20'001);
  freeElsewhere(many);
  EXPECT_TRUE(many.empty());
  waitForThreads();
  EXPECT_EQ(freed, 20'001);
  EXPECT_EQ(freedOnMainThread, 0);
  freeElsewhere(few);
  EXPECT_EQ(freedOnMainThread, 1);
}

} // namespace

} // namespace searchsystem
