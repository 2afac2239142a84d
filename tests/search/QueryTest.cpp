#include "platform/foundation/NSClass.h"
#include "testing/DocumentWriter.h"
#include "testing/PhotoFile.h"
#include "testing/SystemCallsGuard.h"
#include "testing/WaitForThreads.h"
#include "tests/search/SearchFixture.h"
#include "tests/support/TimeZone.h"

#include <filesystem>
#include <thread>

namespace searchsystem {

namespace {

/// Searches through the metadata index.
class QueryTest : public SearchFixture {
protected:
  QueryTest() {
    setSystemVersionForTesting(0x1058);
    const std::string beach = jpegFile(
        {PhotoTags::photo().text(0, 0x010E, "a beach").taken("2010:01:05 12:00:00").exifSegment()});
    const std::string text = documentShowing({"beach"});
    tree.file("in/beach.txt", "beach");
    std::int64_t moment = NSDate::secondsFrom1970To2001;
    for (const std::string name :
         {"1beach.jpg", "2Beach.pdf", "3other.jpg", "in/4beach.tif", "in/5other.pdf"}) {
      tree.file(name, name.ends_with("pdf") ? text : beach);
      tree.setModified(name, ++moment);
    }
  }

  ~QueryTest() override {
    reset();
    gbSpotlight = 1;
  }

  const TimeZone zone{"UTC"};
};

TEST_F(QueryTest, Conditions) {
  const std::string all = "1beach.jpg 2Beach.pdf 3other.jpg in/4beach.tif in/5other.pdf";
  const std::string shot = "S=284000000";
  const struct {
    std::string words, found;
    double end = 0.5;
  } rows[] = {
      {"n=beach", "1beach.jpg 2Beach.pdf in/4beach.tif"},
      {"n=beach d", "1beach.jpg in/4beach.tif"},
      {"n=beach f", "1beach.jpg 2Beach.pdf"},
      {"n=", all},
      {"s=2 e=5", "3other.jpg in/4beach.tif"},
      {"s=2", all},
      {"e=2", all},
      {"n=beach s=2 e=5", "in/4beach.tif"},
      {"n=beach s=2 e=5 o", "1beach.jpg 2Beach.pdf 3other.jpg in/4beach.tif"},
      {"c=beach x", "1beach.jpg 3other.jpg"},
      {"c=beach p", "2Beach.pdf in/5other.pdf"},
      {"c=beach x p n=other", "3other.jpg in/5other.pdf"},
      {shot, "1beach.jpg 3other.jpg"},
      {"c=beach p " + shot, ""},
      {"n= o", ""},
      {"s=2 o", ""},
      {"c=beach x o", "1beach.jpg 3other.jpg in/4beach.tif", 1.5},
      {"c=beach x n=beach o", "1beach.jpg 2Beach.pdf 3other.jpg in/4beach.tif", 1.5},
      {"c=beach p n=beach o", "1beach.jpg 2Beach.pdf 2Beach.pdf in/4beach.tif in/5other.pdf", 1.5},
      {"c=beach x p n=nothing o", all, 1.5},
      {"c=beach x p n=nothing f o", "1beach.jpg 2Beach.pdf 3other.jpg", 1.5}};
  for (const auto &row : rows) {
    SCOPED_TRACE(row.words);
    EXPECT_EQ(found(row.words), row.found);
    EXPECT_TRUE(isAt(hosts[0].endTime, row.end)) << hosts[0].endTime;
  }
}

TEST_F(QueryTest, StartFolders) {
  tree.link("link", "in");
  const std::pair<std::string, std::string> rows[] = {
      {tree.path("in"), "in/4beach.tif !"},
      {tree.path("link"), "in/4beach.tif !"},
      {" " + tree.path("in") + "\t ", "in/4beach.tif !"},
      {tree.path("in/4beach.tif"), "!"},
      {tree.path("none"), "!"}};
  for (const auto &[folder, found] : rows)
    for (const char *const words : {"n=beach", "n=beach f"}) {
      Request request(folder, words);
      request.resultCallback = report<0>;
      EXPECT_EQ(search(request), found) << folder << words;
    }
  // A list is never looked for in the index.
  Request request = makeRequest("n=beach c=beach x o");
  request.setList({tree.path("1beach.jpg"), tree.path("1beach.jpg")});
  EXPECT_EQ(search(request), "1beach.jpg 1beach.jpg !");
  EXPECT_TRUE(isAt(hosts[0].endTime, 1.5)) << hosts[0].endTime;
}

TEST_F(QueryTest, WhatIsMissing) {
  const struct {
    const char *hidden;
    bool hasFolder;
    double end;
  } rows[] = {{"NSMetadataQuery", true, 0.5},
              {"NSPredicate", true, 0.1},
              {"NSCompoundPredicate", true, 0.1},
              {"none", false, 0.1}};
  for (const auto &row : rows) {
    NSClass::hideForTesting(row.hidden);
    Request request = makeRequest("n=beach");
    if (!row.hasFolder)
      request.searchFolder = nullptr;
    EXPECT_EQ(search(request), "!");
    EXPECT_TRUE(isAt(hosts[0].endTime, row.end)) << row.hidden;
    NSClass::hideForTesting("");
  }
}

TEST_F(QueryTest, TheSwitchMayChange) {
  const char *const all = "1beach.jpg 2Beach.pdf in/4beach.tif";
  const struct {
    const char *name;
    signed char atCreation, atStart, later;
    const char *found;
    double end;
  } rows[] = {{"an engine without a query cannot pose one", 0, 1, 1, "", 0.5},
              {"a query that is not used", 1, 0, 0, all, 1.5},
              {"a query that goes on", 1, 1, 0, all, 0.5},
              {"a walk that goes on", 0, 0, 1, all, 1.5}};
  for (const auto &row : rows) {
    SCOPED_TRACE(row.name);
    reset();
    Request request = makeRequest("n=beach");
    useSpotlight(row.atCreation);
    static_cast<void>(SearchEngine::sharedSearchEngine());
    useSpotlight(row.atStart);
    SS_SearchStart(&request);
    useSpotlight(row.later);
    finish();
    EXPECT_TRUE(told().ends_with("!"));
    EXPECT_EQ(sortedResults(), row.found);
    EXPECT_TRUE(isAt(hosts[0].endTime, row.end)) << hosts[0].endTime;
  }
}

TEST_F(QueryTest, CancelWhileThousandsWait) {
  for (int i = 0; i < 3000; ++i)
    std::filesystem::create_hard_link(tree.path("1beach.jpg"),
                                      tree.folder("many/" + std::to_string(i % 10)) + "/beach " +
                                          std::to_string(i) + ".jpg");
  IndexPlace::setCacheFolderForTesting("/proc");
  constexpr int listings = 2 * (3 + 10);
  for (const bool isInResult : {true, false}) {
    reset();
    Host &host = hosts[0];
    if (isInResult)
      host.onResult = [] { SS_SearchCancel(); };
    const SystemCallsGuard guard;
    Request request = makeRequest("n=beach c=beach x");
    SS_SearchStart(&request);
    while (guard.counts().listEntries < listings)
      std::this_thread::yield();
    while (host.words.empty())
      PFMainLoopDispatch();
    SS_SearchCancel();
    const std::size_t count = host.words.size();
    EXPECT_TRUE(isInResult ? count == 1 : count < 3000) << count;
    finish();
    EXPECT_EQ(host.words.size(), count + 1);
    EXPECT_EQ(host.words.back(), "!");
    EXPECT_TRUE(isAt(host.endTime, 0.5)) << host.endTime;
    waitForThreads();
  }
}

} // namespace

} // namespace searchsystem
