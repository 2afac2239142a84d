#pragma once

#include "platform/foundation/NSNotificationCenter.h"
#include "platform/metadata/MetadataIndex.h"
#include "platform/metadata/NSCompoundPredicate.h"
#include "platform/metadata/NSMetadataQuery.h"
#include "testing/StatusAnHourAgo.h"
#include "testing/SystemCallsGuard.h"
#include "testing/WaitForThreads.h"
#include "tests/search/SearchFixture.h"

namespace searchsystem {

/// A folder to search, a query, and its notifications.
class QueryFixture : public SearchFixture {
protected:
  QueryFixture() {
    center.addObserver(this, progressed, NSMetadataQueryGatheringProgressNotification);
    center.addObserver(this, finished, NSMetadataQueryDidFinishGatheringNotification);
  }

  ~QueryFixture() override {
    query = nullptr;
    waitForThreads();
    center.removeObserver(this, NSMetadataQueryGatheringProgressNotification);
    center.removeObserver(this, NSMetadataQueryDidFinishGatheringNotification);
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
    log.clear();
    results.clear();
    query->setPredicate(std::move(predicate));
    query->setSearchScopes(arrayOf(scopes));
    return query->startQuery();
  }

  /// Follows the query to its end, and its threads to theirs.
  void finishQuery() {
    runWhile([this] { return query->isGathering() != 0; });
    waitForThreads();
  }

  /// The paths that a query finds, in alphabetical order.
  std::string find(const Words &scopes, Ref<const NSPredicate> predicate = anyKind()) {
    EXPECT_EQ(start(scopes, std::move(predicate)), 1);
    finishQuery();
    return sortedResults();
  }
  std::string find() { return find({tree.path()}); }

  std::string sortedResults() const {
    Words sorted = results;
    std::sort(sorted.begin(), sorted.end());
    return join(sorted);
  }

  static PFMetadataIndexStatus status() {
    PFMetadataIndexStatus status{};
    EXPECT_EQ(PFMetadataIndexGetStatus(&status), 1);
    return status;
  }

  Ref<NSMetadataQuery> query = NSMetadataQuery::create();
  /// A "p" for each progress, followed by the number of results that were read; a "!" at the end.
  std::string log;
  /// The paths found, relative to the test's folder.
  Words results;
  std::function<void()> onResult = [] {}, onFinish = [] {};

private:
  static void progressed(void *observer, const NSNotification &notification) {
    auto &self = *static_cast<QueryFixture *>(observer);
    if (notification.object != self.query.get())
      return;
    const std::size_t before = self.results.size();
    while (self.query && self.results.size() < self.query->resultCount()) {
      const auto item = self.query->resultAtIndex(self.results.size());
      const auto path = item->valueForAttribute("kMDItemPath");
      self.results.push_back(self.relative(dynamic_cast<const NSString &>(*path).view()));
      EXPECT_FALSE(item->valueForAttribute("kMDItemFSName"));
      self.onResult();
    }
    self.log += "p" + std::to_string(self.results.size() - before) + " ";
  }

  static void finished(void *observer, const NSNotification &notification) {
    auto &self = *static_cast<QueryFixture *>(observer);
    if (notification.object != self.query.get())
      return;
    EXPECT_EQ(self.query->isGathering(), 0);
    EXPECT_EQ(self.results.size(), self.query->resultCount());
    self.log += "!";
    self.onFinish();
  }

  NSNotificationCenter &center = NSNotificationCenter::defaultCenter();
};

} // namespace searchsystem
