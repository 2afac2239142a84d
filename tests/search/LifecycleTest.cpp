#include "platform/foundation/NSClass.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "platform/foundation/Perform.h"
#include "tests/search/SearchFixture.h"

#include <climits>

namespace {

class LifecycleTest : public SearchFixture {};

TEST_F(LifecycleTest, ARequestNeedsACondition) {
  constexpr struct {
    const char *words;
    /// The kinds of conditions on content; null when there is no condition at all.
    const char *content;
    const char *told;
  } rows[] = {{"", nullptr, "!"},     {"n=", "", "a.jpg !"},    {"c=k", nullptr, "!"},
              {"x p", nullptr, "!"},  {"c=k x", "exif ", "!"},  {"c=k p", "pdf ", "!"},
              {"s=0", "", "a.jpg !"}, {"e=9e9", "", "a.jpg !"}, {"S=0", "date ", "!"},
              {"E=9e9", "date ", "!"}};
  tree.file("a.jpg");
  for (const auto &[words, content, expected] : rows) {
    SCOPED_TRACE(words);
    Request request = makeRequest(words);
    request.hostValue = INT_MIN;
    EXPECT_EQ(search(request), expected);
    EXPECT_NEAR(hosts[0].endTime, content ? 1.5 : 0.1, timeTolerance);

    SearchEngineProbe probe;
    probe.begin(request);
    EXPECT_EQ(probe.engine.checkSearchParam(), content ? 1 : 0);
    std::string kinds = probe.engine.isExifSearch() == 1 ? "exif " : "";
    kinds += probe.engine.isPDFSearch() == 1 ? "pdf " : "";
    kinds += probe.engine.isTokenDateSearch() == 1 ? "date " : "";
    EXPECT_EQ(kinds, content ? content : "");
  }
}

TEST_F(LifecycleTest, CancelAndStartDuringASearch) {
  enum Action { Cancel, Start, StartNull };
  constexpr double before = -3;
  constexpr double inResult = -2;
  constexpr double inEnd = -1;
  constexpr struct {
    const char *name;
    Action action;
    const char *first;
    double moment;
    std::size_t leastResults;
    std::size_t mostResults;
    double end;
    const char *toldNewer = "";
  } rows[] = {
      {"cancel before the start", Cancel, "n=", before, 3, 3, 1.5},
      {"cancel at once", Cancel, "n=", 0, 0, 3, 1.5},
      {"cancel in a result", Cancel, "n=", inResult, 1, 1, 1.5},
      {"cancel after the last worker", Cancel, "n=", 0.999, 3, 3, 1.5},
      {"cancel when found to be over", Cancel, "n=", 1.001, 3, 3, 1.5},
      {"cancel when refused", Cancel, "", 0.05, 0, 0, 0.1},
      {"start at once", Start, "n=", 0, 0, 3, 1.5, "!"},
      {"start in a result", Start, "n=", inResult, 1, 1, 1.5, "!"},
      {"start after the last worker", Start, "n=", 0.999, 3, 3, 1.5, "!"},
      {"start when found to be over", Start, "n=", 1.001, 3, 3, 1.5, "!"},
      {"start when refused", Start, "", 0.05, 0, 0, 0.1, "!"},
      {"start in the end", Start, "n=", inEnd, 3, 3, 3.0, "other.app/new.jpg !"},
      {"null record", StartNull, "n=", inResult, 3, 3, 1.5},
      {"null record without an engine", StartNull, "n=", before, 3, 3, 1.5},
  };
  for (const char *const name : {"a.jpg", "b.jpg", "c.jpg", "other.app/new.jpg"})
    tree.file(name);
  for (const auto &row : rows) {
    SCOPED_TRACE(row.name);
    reset();
    Request first = makeRequest(row.first);
    Request second = makeRequest<1>("n=", "other.app");
    const auto act = [&] {
      EXPECT_EQ(row.action == Cancel ? SS_SearchCancel()
                                     : SS_SearchStart(row.action == Start ? &second : nullptr),
                1);
    };
    if (row.moment == before) {
      act();
      drain();
      EXPECT_EQ(SearchEngineProbe::shared() != nullptr, row.action == Cancel);
    }
    if (row.moment == inResult)
      hosts[0].onResult = act;
    if (row.moment == inEnd)
      hosts[0].onEnd = act;
    SS_SearchStart(&first);
    if (row.moment == 0)
      act();
    if (row.moment > 0)
      performAfterDelay(row.moment, [&] {
        EXPECT_EQ(SearchEngineProbe().isSearching, row.moment < 1 && row.end > 1 ? 1 : 0);
        act();
      });
    finish();
    EXPECT_EQ(gSearchPredicate, row.action == Start ? &second : &first);
    EXPECT_EQ(told(1), row.toldNewer);
    const bool isOlderEnded = row.action != Start || row.moment == inEnd;
    EXPECT_EQ(hosts[0].endTime > 0, isOlderEnded);
    const std::size_t results = hosts[0].words.size() - (isOlderEnded ? 1 : 0);
    EXPECT_GE(results, row.leastResults);
    EXPECT_LE(results, row.mostResults);
    EXPECT_NEAR(hosts[row.action == Start ? 1 : 0].endTime, row.end, timeTolerance);
  }

  Request forNobody = makeRequest("n=");
  forNobody.resultCallback = nullptr;
  search(forNobody);
  EXPECT_NEAR(VirtualClock::now() - startTime, 1.5, timeTolerance);
}

struct Query final : NSObject {
  Query() { ++alive; }
  ~Query() override { --alive; }
  static inline int alive = 0;
};
const NSClass queryClass("NSMetadataQuery", [] { return Ref<NSObject>::adopt(new Query); });

TEST_F(LifecycleTest, TheIndexIsUsedWhereItMayBe) {
  constexpr struct {
    const char *name;
    std::int32_t version;
    signed char isAllowed;
    bool hasClass;
    bool hasList;
    double end;
  } rows[] = {
      {"system without an index", 0x1040, 1, true, false, 1.5},
      {"first with one, but without its classes", 0x1041, 1, false, false, 0.1},
      {"forbidden", 0x1058, 0, true, false, 1.5},
      {"list of files", 0x1058, 1, true, true, 1.5},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.name);
    setSystemVersionForTesting(row.version);
    useSpotlight(row.isAllowed);
    NSClass::hideForTesting("NSMetadataQuery", !row.hasClass);
    Request request = makeRequest("n=");
    if (row.hasList)
      request.setList({});
    EXPECT_EQ(search(request), "!");
    EXPECT_NEAR(hosts[0].endTime, row.end, timeTolerance);
    const SearchEngineProbe next;
    EXPECT_EQ(Query::alive, row.hasList ? 1 : 0);
  }

  // The engine hears of its query as long as it lives, whatever the host forbids meanwhile.
  constexpr const char *finished = "NSMetadataQueryDidFinishGatheringNotification";
  NSNotificationCenter &center = NSNotificationCenter::defaultCenter();
  const SearchEngineProbe probe;
  center.postNotification("NSMetadataQueryGatheringProgressNotification", probe.query);
  EXPECT_EQ(probe.isStopSpotlight, 0);
  center.postNotification(finished, probe.query);
  EXPECT_EQ(probe.isStopSpotlight, 1);
  useSpotlight(0);
  reset();
  EXPECT_EQ(Query::alive, 0);
  center.postNotification(finished, nullptr);
}

} // namespace
