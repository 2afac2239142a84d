#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/CoreFoundation.h"
#include "platform/foundation/MainLoop.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/Perform.h"
#include "platform/foundation/Ref.h"
#include "tests/support/VirtualClock.h"

#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

/// Cases write what happens into `log` and compare it as a whole.
class MainRunLoopTest : public testing::Test {
protected:
  ~MainRunLoopTest() override { drain(); }

  void drain() {
    while (PFMainLoopDispatch() != 0) {
    }
  }

  /// Posts work that logs `word`.
  void say(const std::string &word) {
    performOnMainThread([this, word] { log += word + " "; });
  }

  /// Schedules work that logs `word` and how much later it came.
  void sayAfter(double seconds, const std::string &word) {
    const auto start = loop.now();
    performAfterDelay(seconds, [this, start, word] {
      log += word + "@" + std::to_string((loop.now() - start) / 1us) + " ";
    });
  }

  static void stop() { CFRunLoopStop(CFRunLoopGetMain()); }

  static bool isReadable(int milliseconds = 0) {
    // Asked for once, as a host does: asking again would bring it up to date.
    static const int descriptor = PFMainLoopGetDescriptor();
    pollfd watched{descriptor, POLLIN, 0};
    return poll(&watched, 1, milliseconds) == 1;
  }

  MainRunLoop &loop = MainRunLoop::shared();
  const VirtualClock clock;
  std::string log;
};

TEST_F(MainRunLoopTest, RunsInOrderAlsoWhatADestructorPosts) {
  say("a");
  std::shared_ptr<void> posting(nullptr, [this](void *) { say("destroyed"); });
  performOnMainThread([posting = std::move(posting)] {});
  say("b");
  performOnMainThreadAndWait([this] { log += "at once "; });
  drain();
  EXPECT_EQ(log, "at once a b destroyed ");
}

TEST_F(MainRunLoopTest, OneCallLeavesWhatArrivesMeanwhile) {
  performOnMainThread([this] {
    performOnMainThread(stop);
    say("posted");
    CFRunLoopRun();
    log += "first ";
  });
  EXPECT_EQ(PFMainLoopDispatch(), 1);
  EXPECT_EQ(log, "first ");
  EXPECT_TRUE(isReadable());
  EXPECT_EQ(PFMainLoopDispatch(), 1);
  EXPECT_EQ(log, "first posted ");
  EXPECT_FALSE(isReadable());
  EXPECT_EQ(PFMainLoopDispatch(), 0);
}

TEST_F(MainRunLoopTest, OneCallEndsAfterEightMilliseconds) {
  performOnMainThread([this] {
    for (const auto end = steady_clock::now() + 8ms; steady_clock::now() < end;) {
    }
    log += "long ";
  });
  say("next");
  EXPECT_EQ(PFMainLoopDispatch(), 1);
  EXPECT_EQ(log, "long ");
  EXPECT_TRUE(isReadable());
  drain();
  EXPECT_EQ(log, "long next ");
}

TEST_F(MainRunLoopTest, NestedRunsGoOnWithTheQueueAndStopOneByOne) {
  performOnMainThread([this] {
    log += "( ";
    CFRunLoopRun();
    log += ") ";
  });
  say("inside");
  performOnMainThread(stop);
  say("outside");
  performOnMainThread(stop);
  say("later");
  CFRunLoopRun();
  EXPECT_EQ(log, "( inside ) outside ");
  drain();
  EXPECT_EQ(log, "( inside ) outside later ");
}

TEST_F(MainRunLoopTest, WorkOfAnotherThreadArrivesInANestedRun) {
  std::thread thread;
  performOnMainThread([&] {
    thread = std::thread([&] {
      say("posted");
      performOnMainThreadAndWait([this] { log += "waited "; });
      stop();
    });
    CFRunLoopRun();
    log += "nested ";
    stop();
  });
  CFRunLoopRun();
  thread.join();
  EXPECT_EQ(log, "posted waited nested ");
}

TEST_F(MainRunLoopTest, RunInModeTellsHowItEnded) {
  const auto run = [](double seconds, Boolean returnsAfterWork) {
    return CFRunLoopRunInMode(kCFRunLoopDefaultMode, seconds, returnsAfterWork);
  };
  stop();
  EXPECT_EQ(run(0, 1), kCFRunLoopRunTimedOut) << "a stop before the run is not kept";
  EXPECT_EQ(run(0.002, 0), kCFRunLoopRunTimedOut);
  say("work");
  EXPECT_EQ(run(-1, 0), kCFRunLoopRunTimedOut) << "with what is due done";
  EXPECT_EQ(log, "work ");
  sayAfter(5, "timer");
  EXPECT_EQ(run(1e300, 1), kCFRunLoopRunHandledSource);
  performOnMainThread(stop);
  EXPECT_EQ(run(1e300, 1), kCFRunLoopRunStopped);
}

TEST_F(MainRunLoopTest, NoHandOverBetweenThreadsIsLost) {
  // Neither counter is atomic: both belong to the main thread.
  int handedOver = 0, running = 5;
  std::vector<std::thread> threads;
  for (int i = running; i > 0; --i)
    threads.emplace_back([&] {
      for (int round = 0; round < 500; ++round) {
        performOnMainThread([&] { ++handedOver; });
        performOnMainThreadAndWait([&, more = 1] { handedOver += more; });
      }
      performOnMainThread([&] { --running == 0 ? stop() : void(); });
    });
  CFRunLoopRun();
  for (std::thread &thread : threads)
    thread.join();
  EXPECT_EQ(handedOver, 5000);
}

TEST_F(MainRunLoopTest, DelaysAreExactAndEqualOnesKeepTheirOrder) {
  sayAfter(1.0, "d");
  sayAfter(0.5, "b");
  sayAfter(0.1, "a");
  sayAfter(0.5, "c");
  sayAfter(0, "now");
  say("work");
  performAfterDelay(0.1, [this] { sayAfter(0.4, "again"); });
  drain();
  EXPECT_EQ(log, "work now@0 a@100000 b@500000 c@500000 again@400000 d@1000000 ");
}

TEST_F(MainRunLoopTest, VirtualClockStandsWhileSomebodyIsAtWork) {
  loop.beginActivity();
  loop.beginActivity();
  sayAfter(0.1, "timer");
  say("work");
  drain();
  loop.endActivity();
  drain();
  EXPECT_EQ(log, "work ");
  EXPECT_FALSE(isReadable());
  loop.endActivity();
  EXPECT_TRUE(isReadable()) << "the clock may jump now";
  say("more");
  PFMainLoopDispatch();
  EXPECT_EQ(log, "work more ") << "but not over work";
  drain();
  EXPECT_EQ(log, "work more timer@100000 ");
}

TEST_F(MainRunLoopTest, ChangeOfClockKeepsWhatIsLeftOfADelay) {
  performAfterDelay(10, [] {});
  sayAfter(4, "four");
  while (log.empty())
    PFMainLoopDispatch();
  const auto before = steady_clock::now();
  PFMainLoopSetClock(PFMainLoopClockReal);
  EXPECT_EQ(PFMainLoopDispatch(), 0) << "the real clock does not jump";
  PFMainLoopSetClock(PFMainLoopClockVirtual);
  const auto passed = steady_clock::now() - before;
  const auto start = loop.now();
  drain();
  EXPECT_LE(loop.now() - start, 6s);
  EXPECT_GE(loop.now() - start, 6s - passed);
}

TEST_F(MainRunLoopTest, WorkMayPostItselfAgainAHundredThousandTimes) {
  int rounds = 0;
  std::function<void()> again = [&] {
    if (++rounds < 100'000)
      performOnMainThread([&] { again(); });
  };
  again();
  drain();
  EXPECT_EQ(rounds, 100'000);
}

TEST_F(MainRunLoopTest, WorkThatThrowsIsFinishedAllTheSame) {
  const auto owned = std::make_shared<int>();
  performOnMainThread([owned] { throw std::runtime_error("work"); });
  performAfterDelay(0.1, [owned] { throw 1; });
  sayAfter(0.2, "later");
  drain();
  EXPECT_EQ(log, "later@200000 ");
  EXPECT_EQ(owned.use_count(), 1);
  std::thread thread([] {
    performOnMainThreadAndWait([] { throw 2; });
    stop();
  });
  CFRunLoopRun();
  thread.join();
}

TEST_F(MainRunLoopTest, DescriptorIsReadableWhileSomethingIsDue) {
  say("before");
  const int descriptor = PFMainLoopGetDescriptor();
  EXPECT_TRUE(isReadable()) << "made after the work";
  EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0);
  drain();
  EXPECT_FALSE(isReadable());
  sayAfter(3600, "hour");
  EXPECT_TRUE(isReadable()) << "the virtual clock may jump";
  PFMainLoopSetClock(PFMainLoopClockReal);
  PFMainLoopDispatch();
  EXPECT_FALSE(isReadable()) << "the real clock does not";
  sayAfter(0.002, "soon");
  EXPECT_TRUE(isReadable(60'000));
  EXPECT_EQ(PFMainLoopDispatch(), 1);
  EXPECT_FALSE(isReadable());
  std::thread([this] { say("thread"); }).join();
  EXPECT_TRUE(isReadable());
  drain();
  EXPECT_FALSE(isReadable());
  PFMainLoopSetClock(PFMainLoopClockVirtual);
  EXPECT_TRUE(isReadable());
  drain();
  performOnMainThread(stop);
  CFRunLoopRun();
  EXPECT_FALSE(isReadable()) << "a stop is nothing that is due";
  EXPECT_EQ(PFMainLoopGetDescriptor(), descriptor);
}

TEST_F(MainRunLoopTest, DescriptorIsQuietWhateverTheMomentOfAPost) {
  std::atomic<int> asked{0}, posted{0};
  constexpr int rounds = 500;
  std::thread thread([&] {
    for (int round = 1; round <= rounds; ++round) {
      while (asked < round) {
      }
      performOnMainThread([] {});
      posted = round;
    }
  });
  int spurious = 0;
  for (int round = 1; round <= rounds; ++round) {
    asked = round;
    while (posted < round)
      PFMainLoopDispatch();
    drain();
    spurious += isReadable() ? 1 : 0;
  }
  thread.join();
  EXPECT_EQ(spurious, 0) << "a host would spin";
}

TEST_F(MainRunLoopTest, ReservedPerformKeepsItsMomentAndItsTarget) {
  struct Target final : NSObject {
    explicit Target(std::string &events) : events_(events) {}
    ~Target() override { events_ += "gone "; }
    void act() {
      events_ += "act@" + std::to_string((MainRunLoop::shared().now() - start_) / 1us) + " ";
      if (std::exchange(repeats_, false))
        perform_.schedule(0.25);
    }
    std::string &events_;
    const std::chrono::nanoseconds start_ = MainRunLoop::shared().now();
    bool repeats_ = true;
    ReservedPerform<Target> perform_{*this, &Target::act};
  };
  {
    const auto target = Ref<Target>::adopt(new Target(log));
    target->perform_.schedule(0.5);
    target->perform_.schedule(0.1);
    sayAfter(0.6, "between");
  }
  drain();
  EXPECT_EQ(log, "act@500000 between@600000 act@750000 gone ");
}

#ifndef NDEBUG
TEST_F(MainRunLoopTest, AssertsTheMainThread) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  const std::vector<std::function<void()>> calls = {
      [] { PFMainLoopDispatch(); }, [] { PFMainLoopGetDescriptor(); },
      [] { CFRunLoopRunInMode(nullptr, 0, 0); }, [] { performAfterDelay(0, [] {}); },
      [] { PFMainLoopSetClock(PFMainLoopClockReal); }};
  for (const auto &call : calls)
    EXPECT_DEATH(std::thread(call).join(), "isMainThread");
}
#endif

} // namespace
