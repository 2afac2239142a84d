#pragma once

#include "platform/foundation/CoreFoundation.h"
#include "platform/foundation/Gestalt.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "platform/metadata/IndexPlace.h"
#include "platform/metadata/MetadataIndex.h"
#include "platform/metadata/NSCompoundPredicate.h"
#include "platform/metadata/NSMetadataQuery.h"
#include "samples/SystemCallsGuard.h"
#include "tests/search/SearchFixture.h"

/// A folder to search, a cache folder of its own, a query, and what it has told.
class QueryFixture : public SearchFixture {
protected:
  QueryFixture() {
    IndexPlace::setCacheFolderForTesting(cache.path());
    setSystemVersionForTesting(0x1040);
    NSNotificationCenter &center = NSNotificationCenter::defaultCenter();
    center.addObserver(this, progressed, NSMetadataQueryGatheringProgressNotification);
    center.addObserver(this, finished, NSMetadataQueryDidFinishGatheringNotification);
  }

  ~QueryFixture() override {
    query = nullptr;
    waitForThreads();
    NSNotificationCenter &center = NSNotificationCenter::defaultCenter();
    center.removeObserver(this, NSMetadataQueryGatheringProgressNotification);
    center.removeObserver(this, NSMetadataQueryDidFinishGatheringNotification);
    setSystemVersionForTesting(0);
    IndexPlace::setCacheFolderForTesting(std::nullopt);
  }

  /// The four kinds of files that the search's walk finds.
  static Ref<const NSPredicate> anyKind() {
    NSCompoundPredicate::Subpredicates kinds;
    for (const char *const kind : {"pdf", "jpg", "tif", "pct"})
      kinds.push_back(
          NSPredicate::predicateWithFormat("kMDItemFSName like[c] '*." + std::string(kind) + "'"));
    return NSCompoundPredicate::orPredicateWithSubpredicates(std::move(kinds));
  }

  /// Starts the query with `predicate` on scopes given as full paths.
  char start(const Words &scopes, Ref<const NSPredicate> predicate = anyKind()) {
    std::vector<Ref<const NSObject>> paths;
    for (const std::string &scope : scopes)
      paths.emplace_back(NSString::create(scope));
    log.clear();
    found.clear();
    query->setPredicate(std::move(predicate));
    query->setSearchScopes(NSArray::create(std::move(paths)));
    return query->startQuery();
  }

  /// Follows the query to its end, and its threads to theirs.
  void finishQuery() {
    while (query->isGathering() != 0)
      ASSERT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 30, 1), kCFRunLoopRunHandledSource);
    waitForThreads();
  }

  /// The virtual clock moves on only when no thread is at work.
  static void waitForThreads() {
    performAfterDelay(1, [] { CFRunLoopStop(CFRunLoopGetMain()); });
    CFRunLoopRun();
  }

  /// What a query finds, relative to the test's folder and in alphabetical order.
  std::string find(const Words &scopes, Ref<const NSPredicate> predicate = anyKind()) {
    EXPECT_EQ(start(scopes, std::move(predicate)), 1);
    finishQuery();
    return sorted(found);
  }
  std::string find() { return find({tree.path()}); }

  std::string sorted(Words paths) const {
    std::sort(paths.begin(), paths.end());
    const std::string root = tree.path() + "/";
    for (std::string &path : paths)
      path.erase(0, path.starts_with(root) ? root.size() : 0);
    return join(paths);
  }

  static PFMetadataIndexStatus status() {
    PFMetadataIndexStatus status{};
    EXPECT_EQ(PFMetadataIndexGetStatus(&status), 1);
    return status;
  }

  /// Lets all folders have been changed an hour earlier than they were, so that a record that is
  /// made now can be relied on.
  static int statusAnHourAgo(int folder, const char *path, int flags, struct statx *status) {
    const int result = realSystemCalls().statusAt(folder, path, flags, status);
    status->stx_ctime.tv_sec -= 3600;
    return result;
  }
  static SystemCalls agedFolders() {
    SystemCalls calls{};
    calls.statusAt = statusAnHourAgo;
    return calls;
  }

  TemporaryTree cache;
  Ref<NSMetadataQuery> query = NSMetadataQuery::create();
  /// A "p" for each progress, followed by the number of results that were read; a "!" at the end.
  std::string log;
  Words found;
  std::function<void()> onResult = [] {}, onFinish = [] {};

private:
  static void progressed(void *observer, const NSNotification &notification) {
    auto &self = *static_cast<QueryFixture *>(observer);
    if (notification.object != self.query.get())
      return;
    const std::size_t before = self.found.size();
    while (self.query && self.found.size() < self.query->resultCount()) {
      const auto item = self.query->resultAtIndex(self.found.size());
      const auto path = item->valueForAttribute("kMDItemPath");
      self.found.emplace_back(dynamic_cast<const NSString &>(*path).view());
      EXPECT_FALSE(item->valueForAttribute("kMDItemFSName"));
      self.onResult();
    }
    self.log += "p" + std::to_string(self.found.size() - before) + " ";
  }

  static void finished(void *observer, const NSNotification &notification) {
    auto &self = *static_cast<QueryFixture *>(observer);
    if (notification.object != self.query.get())
      return;
    EXPECT_EQ(self.query->isGathering(), 0);
    EXPECT_EQ(self.found.size(), self.query->resultCount());
    self.log += "!";
    self.onFinish();
  }
};
