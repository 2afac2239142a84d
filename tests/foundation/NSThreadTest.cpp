#include "platform/foundation/NSThread.h"
#include "platform/foundation/CoreFoundation.h"
#include "platform/foundation/MainLoop.h"
#include "platform/foundation/NSLock.h"
#include "tests/support/SystemCallsGuard.h"
#include "tests/support/VirtualClock.h"

#include <chrono>
#include <csignal>
#include <functional>
#include <gtest/gtest.h>
#include <latch>
#include <list>
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

    std::function<void()> atEnd;

  private:
    void main() override { body_(); }
    void ended() noexcept override {
      --test_.running_;
      test_.note("ended");
      if (const auto action = std::exchange(atEnd, nullptr))
        action();
    }

    const std::function<void()> body_;
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
    const LockGuard guard(lock_);
    log += MainRunLoop::shared().isMainThread() ? word + " " : "(" + word + ") ";
  }

  /// A last hand-over that notes itself.
  void noteAtExit() {
    ThreadJob::performAtExit([](void *test) { static_cast<NSThreadTest *>(test)->note("exit"); },
                             this);
  }

  const VirtualClock clock;
  std::string log;

private:
  NSLock lock_;
  std::list<Job> jobs_;
  int running_ = 0;
};

TEST_F(NSThreadTest, JobRunsOnItsThreadAndEndsOnTheMainThread) {
  std::latch gate(1);
  performAfterDelay(0.1, [this] { note("timer"); });
  job([&] {
    gate.wait();
    noteAtExit();
    note("main");
  }).start();
  EXPECT_EQ(PFMainLoopDispatch(), 0) << "the virtual clock stands meanwhile";
  gate.count_down();
  finishJobs();
  EXPECT_EQ(log, "(main) exit ended ");
  job([this] {
    noteAtExit();
    note("throws");
    throw std::runtime_error("job");
  }).start();
  finishJobs();
  PFMainLoopDispatch();
  EXPECT_EQ(log, "(main) exit ended (throws) exit ended timer ");
}

TEST_F(NSThreadTest, ThreadsBlockAllSignals) {
  sigset_t before, inJob, after;
  pthread_sigmask(SIG_SETMASK, nullptr, &before);
  job([&] { pthread_sigmask(SIG_SETMASK, nullptr, &inJob); }).start();
  finishJobs();
  pthread_sigmask(SIG_SETMASK, nullptr, &after);
  for (const int signal : {SIGINT, SIGTERM, SIGALRM, SIGCHLD, SIGUSR1, SIGPIPE, SIGRTMIN}) {
    EXPECT_EQ(sigismember(&inJob, signal), 1) << signal;
    EXPECT_EQ(sigismember(&after, signal), sigismember(&before, signal)) << signal;
  }
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
  EXPECT_EQ(log.find("main exit ended "), 0U) << log;
  gate.count_down();
  finishJobs();
}

TEST_F(NSThreadTest, NoJobWaitsForAnother) {
  constexpr int count = 64;
  std::latch all(count);
  for (int i = 0; i < count; ++i)
    job([&] { all.arrive_and_wait(); }).start();
  finishJobs();
  EXPECT_TRUE(all.try_wait());
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

TEST_F(NSThreadTest, IdleThreadsAreUsedAgain) {
  const SystemCallsGuard calls;
  for (int i = 0; i < 50; ++i) {
    job([] {}).start();
    finishJobs();
  }
  EXPECT_LT(calls.counts().startThread, 25);
}

TEST_F(NSThreadTest, JobsAreStartedWhereOthersEnd) {
  std::latch firstHasEnded(1);
  Job &second = job([&] {
    firstHasEnded.wait();
    note("second");
  });
  Job &first = job([&] {
    note("first");
    ThreadJob::performAtExit([](void *other) { static_cast<Job *>(other)->start(); }, &second);
  });
  first.atEnd = [&] { firstHasEnded.count_down(); };
  second.atEnd = [&] { second.start(); };
  first.start();
  finishJobs();
  EXPECT_EQ(log, "(first) ended (second) ended (second) ended ");
}

TEST_F(NSThreadTest, PerformAtExitWaitsWhereThereIsNoJob) {
  noteAtExit();
  EXPECT_EQ(log, "exit ") << "at once on the main thread";
  std::thread thread([this] {
    noteAtExit();
    log += "back ";
    performOnMainThread([] { CFRunLoopStop(CFRunLoopGetMain()); });
  });
  CFRunLoopRun();
  thread.join();
  EXPECT_EQ(log, "exit exit back ");
}

} // namespace
