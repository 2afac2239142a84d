#pragma once

#include "FileSharchFunction/SearchSystem/SearchEngine.h"
#include "platform/foundation/Gestalt.h"
#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSDate.h"
#include "platform/metadata/IndexPlace.h"
#include "testing/TemporaryTree.h"
#include "testing/VirtualClock.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace searchsystem {

using Words = std::vector<std::string>;

inline std::string join(const Words &words) {
  std::string all;
  for (const std::string &word : words)
    all += (all.empty() ? "" : " ") + word;
  return all;
}

inline Ref<const NSArray> arrayOf(const Words &words) {
  std::vector<Ref<const NSObject>> elements;
  for (const std::string &word : words)
    elements.emplace_back(NSString::create(word));
  return NSArray::create(std::move(elements));
}

/// Reaches the members of the engine, which it makes if there is none.
struct SearchEngineProbe {
  static RunningSearch *shared() { return SearchEngine::sSharedSearchEngine; }
  /// Makes `record` the running search, without anything that produces results.
  void begin(const SearchPredicate &record) {
    engine._searchPredicate = &record;
    isSearching = 1;
  }

  SearchEngine &engine = *SearchEngine::sharedSearchEngine();
  char &isSearching = engine._isSearching;
  std::atomic<char> &isCancelled = engine._bCancel;
  char &isUseSpotlight = engine._isUseSpotlight;
  std::atomic<int> &returnCount = engine.distribution_._returnCount;
  const int &pdfThreadCount = engine._pdfThreadCount;
  const std::deque<Ref<const NSString>> &pdfPool = engine._pdfPool.paths_;
  const TimedWork &walkEnd = engine._dirPool.end_;
};

/// A request record with the objects that it borrows, written as words: `n=` and `c=` give the
/// keywords, `s=` and `e=` the range of modification dates, `S=` and `E=` that of shooting dates;
/// `x` wants EXIF text, `p` PDF text, `f` no sub-folders, `d` exact letters, `o` any condition.
struct Request : SearchPredicate {
  Request(const std::string &folder, const std::string &words) : SearchPredicate{} {
    searchFolder = keep(NSString::create(folder));
    checkSubFolder = isAndSearch = 1;
    std::istringstream stream(words);
    for (std::string word; stream >> word;) {
      const char letter = word.front();
      word.erase(0, 2);
      if (letter == 'n' || letter == 'c')
        (letter == 'n' ? nameKeyword : contentKeyword) = keep(NSString::create(word));
      else if (const auto date = std::string_view("seSE").find(letter); date < 4)
        *std::array{&modDateStart, &modDateEnd, &exifDateStart, &exifDateEnd}[date] =
            keep(NSDate::dateWithTimeIntervalSinceReferenceDate(std::stod(word)));
      else
        *std::array{&searchExifText, &searchPDFText, &checkSubFolder, &isDistinct,
                    &isAndSearch}[std::string_view("xpfdo").find(letter)] ^= 1;
    }
  }

  void setList(const Words &paths) { fileList = keep(arrayOf(paths)); }

private:
  template <class T> const T *keep(const Ref<const T> &object) {
    return static_cast<const T *>(kept_.emplace_back(object).get());
  }
  std::vector<Ref<const NSObject>> kept_;
};

/// A folder, the virtual clock, and two hosts.
class SearchFixture : public testing::Test {
protected:
  /// What a host has been told, and what it does then.
  struct Host {
    /// The results as they came, relative to the test's folder; the end is a "!".
    Words words;
    double endTime = -1;
    std::function<void()> onResult = [] {}, onEnd = [] {};
    bool isInResult = false;
  };

  SearchFixture() {
    current = this;
    // Without an index, unless a test wants one.
    setSystemVersionForTesting(0x1040);
    IndexPlace::setCacheFolderForTesting(cache.path());
  }
  ~SearchFixture() override {
    reset();
    setSystemVersionForTesting(0);
    IndexPlace::setCacheFolderForTesting(std::nullopt);
  }

  /// Begins anew, for the next row of a table.
  void reset() {
    drain();
    SearchEngine::releaseSharedSearchEngine();
    hosts[0] = hosts[1] = {};
    startTime = VirtualClock::now();
  }

  template <int number = 0> static void report(CFStringRef path, int32_t state) {
    Host &host = current->hosts[number];
    EXPECT_TRUE(MainRunLoop::shared().isMainThread());
    EXPECT_EQ(path != nullptr ? 1 : 0, state);
    EXPECT_LT(host.endTime, 0) << "told something after the end";
    host.words.push_back(path != nullptr ? current->relative(path->view()) : "!");
    if (path == nullptr) {
      host.endTime = VirtualClock::now() - current->startTime;
      host.onEnd();
      return;
    }
    EXPECT_FALSE(std::exchange(host.isInResult, true)) << "told a result inside another";
    const std::shared_ptr<void> leave(nullptr, [&](void *) { host.isInResult = false; });
    host.onResult();
  }

  /// A path without that of the test's folder, where it begins with it.
  std::string relative(std::string_view path) const {
    const std::string root = tree.path() + "/";
    return std::string(path.substr(path.starts_with(root) ? root.size() : 0));
  }

  /// Empty files.
  void makeFiles(std::initializer_list<const char *> names) {
    for (const char *const name : names)
      tree.file(name);
  }

  template <int number = 0>
  Request makeRequest(const std::string &words, const std::string &folder = {}) {
    Request request(tree.path(folder), words);
    request.resultCallback = report<number>;
    return request;
  }

  /// Runs the loop until there is no engine, and then until nothing is left to happen.
  void finish() {
    runWhile([] { return SearchEngineProbe::shared() != nullptr; });
    drain();
  }

  template <class Condition> static void runWhile(const Condition &holds) {
    while (holds())
      ASSERT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 30, 1), kCFRunLoopRunHandledSource);
  }

  static void drain() {
    while (PFMainLoopDispatch() != 0) {
    }
  }

  /// Starts a search and follows it to its end; what the host has been told.
  std::string search(Request &request) {
    reset();
    EXPECT_EQ(SS_SearchStart(&request), 1);
    finish();
    return told();
  }

  std::string told(int number = 0) const { return join(hosts[number].words); }

  /// Searches for what is written in `words`.
  std::string search(const std::string &words) {
    Request request = makeRequest(words);
    return search(request);
  }

  /// The results of a search without the end, which there must be, in alphabetical order.
  std::string found(const std::string &words) {
    EXPECT_TRUE(search(words).ends_with("!"));
    return sortedResults();
  }

  /// What the host has been told but for ends, in alphabetical order.
  std::string sortedResults() {
    Words results = hosts[0].words;
    std::erase(results, "!");
    std::sort(results.begin(), results.end());
    return join(results);
  }

  /// Conditions, and what meets all of them, or any.
  struct Conditions {
    std::string words, all, any;
  };
  template <std::size_t count> void expectFound(const Conditions (&rows)[count]) {
    for (const Conditions &row : rows)
      for (const bool isAny : {false, true}) {
        EXPECT_EQ(found(row.words + (isAny ? " o" : "")), isAny ? row.any : row.all) << row.words;
        EXPECT_TRUE(isAt(hosts[0].endTime, 1.5)) << row.words << isAny;
      }
  }

  /// Whether a moment is the one that is expected, but for rounding.
  static bool isAt(double moment, double expected) { return std::abs(moment - expected) < 1e-6; }

  TemporaryTree tree;
  TemporaryTree cache;
  const VirtualClock clock;
  double startTime = VirtualClock::now();
  Host hosts[2];

private:
  static inline SearchFixture *current = nullptr;
};

} // namespace searchsystem
