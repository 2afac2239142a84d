#include "tests/search/SearchFixture.h"

namespace searchsystem {

namespace {

class DistributionTest : public SearchFixture {
protected:
  /// Plays a script to an engine that has no producer of its own. Each letter is a message: a to z
  /// a result of that name, E an end, 0 none at all. A plus sign counts a result as posted, T
  /// runs the loop until nothing is left.
  void play(SearchEngineProbe &probe, std::string_view script) {
    for (const char c : script) {
      ResultMessage message;
      if (c >= 'a')
        message = {NSString::create({&c, 1}), 1};
      if (c == '+')
        ++probe.returnCount;
      else if (c == 'T')
        drain();
      else
        probe.engine.searchResultDistribution(c == '0' ? nullptr : &message);
      message.ResultData = NSString::create("overwritten");
    }
  }
};

TEST_F(DistributionTest, Conversations) {
  // In the request `index` stands for the use of the index; the last
  // script is played in the callback for the first result.
  constexpr struct {
    const char *name, *words, *script, *told, *inside = "";
  } rows[] = {
      {"results and end", "n=", "+a+bE", "a b !"},
      {"no result", "n=", "0E0", "!"},
      {"end overtakes two", "n=", "++EaTb", "a b !"},
      {"end overtakes what never comes", "n=", "+ET", ""},
      {"messages after the end", "n=", "E+aE+b", "a b !"},

      {"EXIF text that is not found", "c=k x", "+aE", "!"},
      {"PDF text that is not found", "c=k p", "+aE", "!"},
      {"shooting date out of range", "E=0", "+aE", "!"},
      {"all conditions, one producer", "c=k x index", "E", "!"},

      {"both producers", "c=k x o index", "+aE+bE", "a b !"},
      {"a file that both find", "c=k x o index", "+a+b+aE+bE", "a b !"},
      {"both ends overtake a result", "c=k x o index", "+EEa", "a !"},

      {"messages inside a result", "n=", "+a", "a b c !", "+b+c0E"},
      {"an end inside has to wait", "n=", "+a", "a b !", "E+bT"},
      {"many messages inside", "n=", "+a", "a b c d e f g h i !", "EEEEEEEE+b+c+d+e+f+g+h+i"},
      {"the end is told inside a late result", "n=", "E+a", "a !", "T+b"},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.name);
    reset();
    const std::string words = row.words;
    Request request = makeRequest(words.substr(0, words.find(" index")));
    gSearchPredicate = &request;
    SearchEngineProbe probe;
    const Ref<SearchEngine> engine(&probe.engine);
    probe.begin(request);
    probe.isUseSpotlight = words.ends_with("index");
    hosts[0].onResult = [&] {
      if (hosts[0].words.size() == 1)
        play(probe, row.inside);
    };
    play(probe, row.script);
    drain();
    EXPECT_EQ(told(), row.told);
    const bool hasEnded = told().ends_with("!");
    EXPECT_EQ(SearchEngineProbe::shared(), hasEnded ? nullptr : engine.get());
    EXPECT_TRUE(isAt(hosts[0].endTime, hasEnded ? 0.5 : -1));
  }
}

TEST_F(DistributionTest, WhatAHostMayDoInAResult) {
  constexpr struct {
    const char *name;
    void (*act)(Request &);
    bool isCancel = false;
    int endsAt = 0;
  } rows[] = {{"cancel", [](Request &) { SS_SearchCancel(); }, true},
              {"start", [](Request &other) { SS_SearchStart(&other); }, true, 1},
              {"wait", [](Request &) { CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.001, 1); }},
              {"dispatch", [](Request &) { drain(); }},
              {"throw", [](Request &) { throw 1; }}};
  const Words all = {"1.jpg",   "2.tif",   "a/3.pdf",   "a/4.pct", "a/b/5.jpg",
                     "c/6.JPG", "c/7.jpg", "c/d/8.jpg", "e/9.jpg", "f/0.jpg"};
  for (const std::string &name : all)
    tree.file(name);
  for (const auto &row : rows) {
    for (const int variant : {0, 1, 2, 3}) {
      const bool isEvery = variant % 2 != 0, hasIndex = variant > 1;
      SCOPED_TRACE(std::string(row.name) + (isEvery ? " in every result" : " in the first") +
                   (hasIndex ? ", index" : ""));
      setSystemVersionForTesting(hasIndex ? 0x1058 : 0x1040);
      reset();
      Request request = makeRequest("n=");
      Request other = makeRequest<1>("n=");
      hosts[0].onResult = [&] {
        if (isEvery || hosts[0].words.size() == 1)
          row.act(other);
      };
      hosts[0].onEnd = [] { throw 1; };
      SS_SearchStart(&request);
      finish();
      EXPECT_TRUE(told(row.endsAt).ends_with("!"));
      EXPECT_EQ(told(1), row.endsAt == 1 ? "!" : "");
      Words &results = hosts[0].words;
      std::erase(results, "!");
      std::sort(results.begin(), results.end());
      EXPECT_TRUE(std::includes(all.begin(), all.end(), results.begin(), results.end()));
      EXPECT_TRUE(results == all || (row.isCancel && !results.empty())) << told();
    }
  }
}

} // namespace

} // namespace searchsystem
