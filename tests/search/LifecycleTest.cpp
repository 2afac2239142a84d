#include "platform/foundation/Localizations.h"
#include "testing/PerformAfterDelay.h"
#include "tests/search/SearchFixture.h"

#include <climits>

namespace searchsystem {

namespace {

using LifecycleTest = SearchFixture;

TEST_F(LifecycleTest, ARequestNeedsACondition) {
  constexpr struct {
    const char *words, *content, *told;
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
    EXPECT_TRUE(isAt(hosts[0].endTime, content ? 1.5 : 0.1));
  }
}

TEST_F(LifecycleTest, CancelAndStartDuringASearch) {
  enum Action { Cancel, Start, StartNull };
  constexpr double before = -3, inResult = -2, inEnd = -1;
  constexpr struct {
    const char *name;
    Action action;
    const char *first;
    double moment;
    std::size_t leastResults, mostResults;
    double end;
    const char *toldNewer = "";
  } rows[] = {{"cancel before the start", Cancel, "n=", before, 3, 3, 1.5},
              {"cancel at once", Cancel, "n=", 0, 0, 3, 1.5},
              {"cancel in a result", Cancel, "n=", inResult, 1, 1, 1.5},
              {"cancel after the last worker", Cancel, "n=", 0.999, 3, 3, 1.5},
              {"cancel when found to be over", Cancel, "n=", 1.001, 3, 3, 1.5},
              {"start at once", Start, "n=", 0, 0, 3, 1.5, "!"},
              {"start in a result", Start, "n=", inResult, 1, 1, 1.5, "!"},
              {"start after the last worker", Start, "n=", 0.999, 3, 3, 1.5, "!"},
              {"start when found to be over", Start, "n=", 1.001, 3, 3, 1.5, "!"},
              {"start in the end", Start, "n=", inEnd, 3, 3, 3.0, "other.app/new.jpg !"},
              {"null record", StartNull, "n=", inResult, 3, 3, 1.5}};
  makeFiles({"a.jpg", "b.jpg", "c.jpg", "other.app/new.jpg"});
  for (const auto &row : rows) {
    SCOPED_TRACE(row.name);
    reset();
    Request first = makeRequest(row.first);
    Request second = makeRequest<1>("n=", "other.app");
    const auto act = [&] {
      SearchPredicate *const started = row.action == Start ? &second : nullptr;
      EXPECT_EQ(row.action == Cancel ? SS_SearchCancel() : SS_SearchStart(started), 1);
    };
    if (row.moment == before)
      act();
    EXPECT_EQ(SearchEngineProbe::shared() != nullptr, row.moment == before && row.action == Cancel);
    if (row.moment == inResult || row.moment == inEnd)
      (row.moment == inEnd ? hosts[0].onEnd : hosts[0].onResult) = act;
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
    EXPECT_EQ(told().ends_with("!"), row.action != Start || row.moment == inEnd);
    std::erase(hosts[0].words, "!");
    EXPECT_GE(hosts[0].words.size(), row.leastResults);
    EXPECT_LE(hosts[0].words.size(), row.mostResults);
    EXPECT_TRUE(isAt(hosts[row.action == Start ? 1 : 0].endTime, row.end));
  }
  Request forNobody = makeRequest("n=");
  forNobody.resultCallback = nullptr;
  EXPECT_EQ(search(forNobody), "");
  EXPECT_TRUE(isAt(VirtualClock::now() - startTime, 1.5));
}

TEST_F(LifecycleTest, EncodingOfTheHostsLanguage) {
  const std::pair<std::string, std::uint32_t> rows[] = {
      {"ja_JP", 1},      {"en_GB", 0},      {"en_US", 0},      {"de_CH", 0x0201}, {"fr_FR", 0x0201},
      {"it_IT", 0x0201}, {"es_ES", 0x0201}, {"nl_NL", 0x0201}, {"pl_PL", 0},      {"", 0}};
  for (const auto &[locale, encoding] : rows) {
    setLocaleEnvironmentForTesting({"", "", locale, ""});
    EXPECT_EQ(SearchEngineProbe().engine.getSearchEncoding(), encoding) << locale;
  }
  setLocaleEnvironmentForTesting({});
}

} // namespace

} // namespace searchsystem
