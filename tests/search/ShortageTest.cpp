#include "testing/Shortage.h"
#include "testing/DocumentWriter.h"
#include "testing/FailingMemory.h"
#include "testing/PhotoFile.h"
#include "testing/SystemCallsGuard.h"
#include "testing/WaitForThreads.h"
#include "tests/search/SearchFixture.h"

#include <cerrno>
#include <filesystem>

namespace searchsystem {

static Shortage memory, threads, descriptors;
static const SystemCalls &real = realSystemCalls();

bool memoryFails(std::size_t /*size*/) noexcept { return memory.fails(); }

namespace {

class ShortageTest : public SearchFixture {
protected:
  /// Searches once for each call that may fail, and once without a failure.
  void searchThrough(Shortage &shortage, bool isHarmless = false) {
    const auto open = [](auto... arguments) {
      return descriptors.fails() ? (errno = EMFILE, -1) : real.openAt(arguments...);
    };
    const auto start = [](auto... arguments) {
      return threads.fails() ? EAGAIN : real.startThread(arguments...);
    };
    const SystemCallsGuard calls({.openAt = open, .startThread = start});
    for (const std::string &name : all)
      tree.file(name, name.ends_with(".pdf") ? document : photo);
    Request request = makeRequest(words);
    request.resultCallback = take;
    const std::ptrdiff_t descriptorsBefore = countDescriptors();
    for (const bool lasts : {true, false}) {
      bool hasFailed = true;
      for (int first = 1; hasFailed; ++first) {
        SCOPED_TRACE(std::to_string(first) + (lasts ? " and all after" : ""));
        results.clear();
        results.reserve(all.size());
        ends = 0;
        // Without threads one folder is searched after the other, in the order of discovery.
        const bool isSerial =
            &shortage == &threads && lasts && first == 1 && countEntries("/proc/self/task") == 1;
        shortage.begin(first, lasts);
        SS_SearchStart(&request);
        while (ends == 0 &&
               CFRunLoopRunInMode(kCFRunLoopDefaultMode, 30, 1) == kCFRunLoopRunHandledSource) {
        }
        drain();
        hasFailed = shortage.end();
        ASSERT_EQ(ends, 1);
        waitForThreads();
        ASSERT_EQ(countDescriptors(), descriptorsBefore);
        Words names;
        for (const Ref<const NSString> &path : results)
          names.push_back(relative(path->view()));
        EXPECT_TRUE(!isSerial || std::is_sorted(names.begin(), names.end(), isLessDeep));
        std::sort(names.begin(), names.end());
        EXPECT_TRUE(std::includes(all.begin(), all.end(), names.begin(), names.end()));
        const bool mayLose = hasFailed && !isHarmless && (lasts || &shortage != &memory);
        EXPECT_TRUE(names == all || mayLose) << join(names);
      }
    }
  }

  static std::ptrdiff_t countDescriptors() { return countEntries("/proc/self/fd"); }

  static std::ptrdiff_t countEntries(const char *folder) {
    using Entries = std::filesystem::directory_iterator;
    return std::distance(Entries(folder), Entries());
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
  const std::string document = documentShowing({"the beach in winter"});
  const std::string photo = jpegFile({PhotoTags::photo().comment("ASCII", "beach").exifSegment()});
  std::string words = "n=.";
  Words all{"1.jpg",   "2.tif",         "a/3.pdf",       "a/b/c/4.pct",
            "d/5.jpg", "e/f.doc/6.jpg", "\xc3\xa9/7.jpg"};
};

TEST_F(ShortageTest, Memory) { searchThrough(memory); }

TEST_F(ShortageTest, MemoryOfAQuery) {
  setSystemVersionForTesting(0x1058);
  searchThrough(memory);
}

TEST_F(ShortageTest, MemoryOfReaders) {
  words = "c=beach p x";
  all = {"1.jpg", "a/3.pdf"};
  searchThrough(memory);
}

TEST_F(ShortageTest, Descriptors) { searchThrough(descriptors); }

TEST_F(ShortageTest, Threads) { searchThrough(threads, true); }

} // namespace

} // namespace searchsystem
