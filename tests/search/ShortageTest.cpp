#include "samples/SystemCallsGuard.h"
#include "tests/search/SearchFixture.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <new>

namespace {

/// Lets one of many calls fail, or that one and all after it.
struct Shortage {
  std::atomic<int> left = INT_MAX;
  std::atomic<bool> lasts = false;
  std::atomic<bool> hasFailed = false;

  bool fails() noexcept {
    const int number = --left;
    if (number != 0 && !(lasts && number < 0))
      return false;
    return hasFailed = true;
  }
} memory, threads, descriptors;

} // namespace

void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
  return memory.fails() ? nullptr : std::malloc(size > 0 ? size : 1);
}
void *operator new(std::size_t size) {
  if (void *const block = operator new(size, std::nothrow))
    return block;
  throw std::bad_alloc();
}
void *operator new[](std::size_t size) { return operator new(size); }
void operator delete(void *block) noexcept { std::free(block); }
void operator delete(void *block, std::size_t) noexcept { std::free(block); }
void operator delete[](void *block) noexcept { std::free(block); }
void operator delete[](void *block, std::size_t) noexcept { std::free(block); }

namespace {

class ShortageTest : public SearchFixture {
protected:
  /// Searches once for each call that may fail, and once without a failure.
  void searchThrough(Shortage &shortage, bool isHarmless = false) {
    SystemCalls replaced = realSystemCalls();
    replaced.openAt = [](int at, const char *path, int flags) {
      return descriptors.fails() ? errno = EMFILE, -1 : realSystemCalls().openAt(at, path, flags);
    };
    replaced.startThread = [](pthread_t *thread, const pthread_attr_t *attributes,
                              void *(*body)(void *), void *argument) {
      return threads.fails() ? EAGAIN
                             : realSystemCalls().startThread(thread, attributes, body, argument);
    };
    const SystemCallsGuard calls(replaced);
    for (const std::string &name : all)
      tree.file(name);
    Request request = makeRequest("n=.");
    request.resultCallback = take;
    const std::ptrdiff_t descriptorsBefore = countDescriptors();
    for (const bool lasts : {true, false}) {
      for (int first = 1; first == 1 || shortage.hasFailed; ++first) {
        SCOPED_TRACE(std::to_string(first) + (lasts ? " and all after" : ""));
        results.clear();
        results.reserve(all.size());
        ends = 0;
        calls.resetCounts();
        shortage.hasFailed = false;
        shortage.lasts = lasts;
        shortage.left = first;
        SS_SearchStart(&request);
        while (ends == 0 &&
               CFRunLoopRunInMode(kCFRunLoopDefaultMode, 30, 1) == kCFRunLoopRunHandledSource) {
        }
        drain();
        shortage.left = INT_MAX;
        ASSERT_EQ(ends, 1);
        waitForThreads();
        ASSERT_EQ(countDescriptors(), descriptorsBefore);
        Words names;
        for (const Ref<const NSString> &path : results)
          names.emplace_back(path->view().substr(tree.path().size() + 1));
        // Without threads one folder is searched after the other, in the order of discovery.
        const bool isSerial = SearchEngine::isAvailableSpotlight() == 0 &&
                              calls.counts().startThread == calls.counts().openAt;
        EXPECT_TRUE(!isSerial || std::is_sorted(names.begin(), names.end(), isLessDeep));
        std::sort(names.begin(), names.end());
        EXPECT_TRUE(std::includes(all.begin(), all.end(), names.begin(), names.end()));
        EXPECT_TRUE(names == all || (shortage.hasFailed && !isHarmless)) << join(names);
      }
    }
  }

  /// The virtual clock moves on only when no thread is at work.
  static void waitForThreads() {
    performAfterDelay(1, [] { CFRunLoopStop(CFRunLoopGetMain()); });
    CFRunLoopRun();
  }

  static std::ptrdiff_t countDescriptors() {
    using Entries = std::filesystem::directory_iterator;
    return std::distance(Entries("/proc/self/fd"), Entries());
  }

  static bool isLessDeep(const std::string &a, const std::string &b) {
    return std::count(a.begin(), a.end(), '/') < std::count(b.begin(), b.end(), '/');
  }

  static void take(CFStringRef path, int32_t state) {
    if (state == 0) {
      ++ends;
      return;
    }
    EXPECT_FALSE(SearchEngineProbe().walkEnd.isScheduled()) << "while a worker runs";
    results.emplace_back(path);
  }

  static inline int ends;
  static inline std::vector<Ref<const NSString>> results;
  Words all{"1.jpg",   "2.tif",         "a/3.pdf",       "a/b/c/4.pct",
            "d/5.jpg", "e/f.doc/6.jpg", "\xc3\xa9/7.jpg"};
};

TEST_F(ShortageTest, Memory) { searchThrough(memory); }

TEST_F(ShortageTest, MemoryOfAQuery) {
  setSystemVersionForTesting(0x1058);
  searchThrough(memory);
}

TEST_F(ShortageTest, Descriptors) { searchThrough(descriptors); }

TEST_F(ShortageTest, Threads) { searchThrough(threads, true); }

} // namespace
