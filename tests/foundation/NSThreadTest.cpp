#include "platform/foundation/NSThread.h"
#include "platform/foundation/CoreFoundation.h"
#include "platform/foundation/MainLoop.h"
#include "samples/SystemCallsGuard.h"
#include "samples/VirtualClock.h"

#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <latch>
#include <list>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

using Clock = MainRunLoop::Clock;

class NSThreadTest : public testing::Test {
protected:
  /// A job that tells the test when it has ended.
  class Job final : public ThreadJob {
  public:
    Job(NSThreadTest &test, std::function<void()> body) : body_(std::move(body)), test_(test) {}

    void start() {
      ++test_.running_;
      NSThread::detachNewThread(*this);
    }

  private:
    void main() override { body_(); }
    void ended() noexcept override {
      --test_.running_;
      test_.note("ended");
    }

    std::function<void()> body_;
    NSThreadTest &test_;
  };

  Job &job(std::function<void()> body) { return jobs_.emplace_back(*this, std::move(body)); }

  /// Runs the loop until every job has ended.
  void finishJobs() {
    while (running_ > 0) {
      const auto end = Clock::now() + std::chrono::seconds(10);
      CFRunLoopRunInMode(nullptr, 10, 1);
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
  job([&] {
    gate.wait();
    noteAtExit();
    note("throws");
    throw std::runtime_error("job");
  }).start();
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
    job([&] {
      if (!MainRunLoop::shared().isMainThread())
        return gate.wait();
      noteAtExit();
      note("main");
    }).start();
  EXPECT_EQ(log, "") << "not inside the call";
  while (log.find("ended") == log.npos)
    CFRunLoopRunInMode(nullptr, 10, 1);
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
    ++*static_cast<int *>(number);
  };
  EXPECT_TRUE(ThreadJob::performAndGoOn(count, &actions)) << "at once on the main thread";
  for (int i = 0; i < jobs; ++i)
    job([&, left = pausesOfEach]() mutable {
      if (left-- == 0)
        return noteAtExit();
      EXPECT_FALSE(ThreadJob::performAndGoOn(count, &actions));
      EXPECT_TRUE(ThreadJob::current()->isPaused());
    }).start();
  finishJobs();
  EXPECT_EQ(actions, 1 + jobs * pausesOfEach);
  EXPECT_EQ(log, "exit ended exit ended exit ended ");
}

TEST_F(NSThreadTest, WorkThatAJobPostsRunsWhileAllJobsAreStuck) {
  std::latch gate(1), others(63);
  for (int i = 0; i < 63; ++i)
    job([&] {
      others.count_down();
      gate.wait();
    }).start();
  job([&] {
    others.wait();
    // The main thread has time to fall asleep.
    performOnMainThreadAndWait([] {});
    for (const auto end = Clock::now() + std::chrono::milliseconds(5); Clock::now() < end;)
      std::this_thread::yield();
    performOnMainThread([&] { gate.count_down(); });
    gate.wait();
  }).start();
  finishJobs();
}

} // namespace
