#include "platform/foundation/NSThread.h"
#include "platform/foundation/CoreFoundation.h"
#include "platform/foundation/FreeElsewhere.h"
#include "platform/foundation/MainLoop.h"
#include "samples/SystemCallsGuard.h"
#include "samples/VirtualClock.h"
#include "samples/WaitForThreads.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <latch>
#include <list>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace {

using Clock = MainRunLoop::Clock;

class NSThreadTest : public testing::Test {
protected:
  struct Job final : ThreadJob {
    using ThreadJob::Demand;
    Job(NSThreadTest &owner, std::function<void()> work, Demand what = Demand::Thread)
        : body(std::move(work)), test(owner), demanded(what) {}
    void main() override { body(); }
    void ended() noexcept override {
      --test.running_;
      test.note("ended");
    }
    Demand demand() const noexcept override { return demanded; }
    std::function<void()> body;
    NSThreadTest &test;
    const Demand demanded;
  };

  /// Starts a job that notes when it has ended.
  void start(std::function<void()> body) {
    ++running_;
    NSThread::detachNewThread(jobs_.emplace_back(*this, std::move(body)));
  }

  /// Starts a job that waits until it is resumed.
  Job &startWaiting(Job::Demand demand, std::function<void()> body) {
    ++running_;
    Job &job = jobs_.emplace_back(*this, std::move(body), demand);
    NSThread::detachWaitingThread(job);
    return job;
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

TEST_F(NSThreadTest, JobsPauseWhileTheMainThreadActs) {
  constexpr int jobs = 3, pausesOfEach = 200;
  int actions = 0;
  const auto count = [](void *number) {
    EXPECT_TRUE(MainRunLoop::shared().isMainThread());
    return ++*static_cast<int *>(number) % 3 != 0;
  };
  EXPECT_TRUE(ThreadJob::performAndGoOn(count, &actions)) << "at once on the main thread";
  for (int i = 0; i < jobs; ++i)
    start([&, left = pausesOfEach]() mutable {
      if (left-- == 0)
        return noteAtExit();
      EXPECT_FALSE(ThreadJob::performAndGoOn(count, &actions));
      EXPECT_TRUE(ThreadJob::current()->isPaused());
    });
  finishJobs();
  EXPECT_GE(actions, 3 + jobs * pausesOfEach);
  EXPECT_EQ(log, "exit ended exit ended exit ended ");
}

TEST_F(NSThreadTest, AJobThatWaitsIsResumed) {
  using Demand = Job::Demand;
  for (const Demand demand : {Demand::Thread, Demand::MainThread, Demand::MainThreadQuietly}) {
    log.clear();
    Job &waiting = startWaiting(demand, [&] {
      note("main");
      noteAtExit();
    });
    CFRunLoopRunInMode(nullptr, 0, 0);
    EXPECT_EQ(log, "");
    start([&] { waiting.resume(); });
    finishJobs();
    EXPECT_NE(log.find(demand == Demand::Thread ? "(main) " : "main "), log.npos) << log;
    EXPECT_NE(log.find("exit ended "), log.npos) << log;
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
    performOnMainThreadAndWait([] {});
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
