#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/CoreFoundation.h"
#include "platform/foundation/MainLoop.h"
#include "platform/foundation/Perform.h"
#include "testing/PerformAfterDelay.h"
#include "testing/VirtualClock.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdexcept>
#include <thread>

namespace searchsystem {

namespace {

using namespace std::chrono_literals;

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

TEST_F(MainRunLoopTest, RunsInOrderAlsoAfterWorkThatThrows) {
  say("a");
  std::shared_ptr<void> posting(nullptr, [this](void *) { say("destroyed"); });
  performOnMainThread([posting = std::move(posting)] { throw std::runtime_error("work"); });
  performOnMainThreadAndWait([this] {
    log += "at once ";
    return false;
  });
  PFMainLoopDispatch();
  EXPECT_EQ(log, "at once a ") << "one call leaves what arrives meanwhile";
  drain();
  EXPECT_EQ(log, "at once a destroyed ");
}

TEST_F(MainRunLoopTest, NestedRunsGoOnWithTheQueueAndStopOneByOne) {
  performOnMainThread([this] {
    log += "( ";
    CFRunLoopRun();
    log += ") ";
  });
  say("inside");
  performOnMainThread(stop);
  performOnMainThread(stop);
  say("later");
  CFRunLoopRun();
  EXPECT_EQ(log, "( inside ) ");
}

TEST_F(MainRunLoopTest, RunInModeTellsHowItEnded) {
  stop();
  EXPECT_EQ(CFRunLoopRunInMode(nullptr, 0, 1), kCFRunLoopRunTimedOut) << "a stop is not kept";
  say("work");
  EXPECT_EQ(CFRunLoopRunInMode(nullptr, -1, 0), kCFRunLoopRunTimedOut) << "with what is due done";
  sayAfter(5, "timer");
  EXPECT_EQ(CFRunLoopRunInMode(nullptr, 1e300, 1), kCFRunLoopRunHandledSource);
  performOnMainThread(stop);
  EXPECT_EQ(CFRunLoopRunInMode(nullptr, 1e300, 1), kCFRunLoopRunStopped);
}

TEST_F(MainRunLoopTest, NoHandOverBetweenThreadsIsLost) {
  // Neither counter is atomic: both belong to the main thread.
  int handedOver = 0, running = 5;
  std::vector<std::thread> threads;
  for (int i = running; i > 0; --i)
    threads.emplace_back([&] {
      for (int round = 0; round < 500; ++round) {
        performOnMainThread([&] { ++handedOver; });
        performOnMainThreadAndWait([&, more = 1] {
          handedOver += more;
          return false;
        });
      }
      performOnMainThread([&] { --running == 0 ? stop() : void(); });
    });
  CFRunLoopRun();
  for (std::thread &thread : threads)
    thread.join();
  EXPECT_EQ(handedOver, 5000);
}

TEST_F(MainRunLoopTest, ThreadsAndTimersWakeIt) {
  // A stop before the loop runs is not kept: the thread stops it until it has.
  std::atomic<int> over{0};
  std::thread stopping([&] {
    for (int round = 0; round < 100; ++round)
      while (over == round) {
        stop();
        std::this_thread::yield();
      }
  });
  for (; over < 100; ++over)
    EXPECT_EQ(CFRunLoopRunInMode(nullptr, 20, 0), kCFRunLoopRunStopped);
  stopping.join();
  PFMainLoopSetClock(PFMainLoopClockReal);
  const auto end = MainRunLoop::Clock::now() + 20s;
  performAfterDelay(0.001, stop);
  EXPECT_EQ(CFRunLoopRunInMode(nullptr, 20, 0), kCFRunLoopRunStopped);
  EXPECT_LT(MainRunLoop::Clock::now(), end);
  PFMainLoopSetClock(PFMainLoopClockVirtual);
}

TEST_F(MainRunLoopTest, VirtualClockStandsWhileSomebodyIsAtWorkAndElseIsExact) {
  loop.beginActivity();
  loop.beginActivity();
  sayAfter(0.5, "b");
  sayAfter(0.1, "a");
  sayAfter(0.5, "c");
  sayAfter(0, "now");
  say("work");
  loop.endActivity();
  drain();
  EXPECT_EQ(log, "work now@0 ");
  EXPECT_FALSE(isReadable());
  loop.endActivity();
  EXPECT_TRUE(isReadable()) << "the clock may jump now";
  drain();
  EXPECT_EQ(log, "work now@0 a@100000 b@500000 c@500000 ");
}

TEST_F(MainRunLoopTest, WorkThatIsScheduledTwiceKeepsItsMoment) {
  struct Target {
    void retain() { ++references; }
    void release() { --references; }
    void act() { ++calls; }
    int references = 0, calls = 0;
  } target;
  ReservedPerform<Target> perform(target, &Target::act);
  for (int round = 1; round <= 2; ++round) {
    const auto start = loop.now();
    perform.schedule(0.5);
    perform.schedule(0.1);
    loop.schedule(perform, 100ms);
    sayAfter(0.2, "before");
    drain();
    EXPECT_EQ((loop.now() - start) / 1us, 500'000);
    EXPECT_EQ(target.calls, round);
    EXPECT_EQ(target.references, 0);
  }
}

TEST_F(MainRunLoopTest, DescriptorIsReadableWhileSomethingIsDue) {
  say("before");
  EXPECT_TRUE(isReadable()) << "made after the work";
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
  PFMainLoopSetClock(PFMainLoopClockVirtual);
  drain();
  performOnMainThread(stop);
  CFRunLoopRun();
  EXPECT_FALSE(isReadable()) << "a stop is nothing that is due";
}

TEST_F(MainRunLoopTest, DescriptorIsQuietWhateverTheMomentOfAPost) {
  std::atomic<int> asked{0}, posted{0};
  constexpr int rounds = 500;
  std::thread thread([&] {
    for (int round = 1; round <= rounds; ++round) {
      // It lets the main thread on where both have one processor.
      while (asked < round)
        std::this_thread::yield();
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

} // namespace

} // namespace searchsystem
