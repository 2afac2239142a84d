#include "testing/CompressedDocument.h"
#include "tests/content/ServiceFixture.h"

#include <ostream>

namespace searchsystem {

namespace {

struct BehaviourCase {
  const char *name;
  const char *content;
  UnreadReason reason;
  /// What it means for photographs, if something else.
  UnreadReason photographReason = reason;

  friend void PrintTo(const BehaviourCase &row, std::ostream *out) { *out << row.name; }
};

class BehaviourTest : public ServiceFixture, public testing::WithParamInterface<BehaviourCase> {};

TEST_P(BehaviourTest, EndsWithItsReason) {
  const ContentAnswer answer = ask(GetParam().content, "what no text holds");
  EXPECT_FALSE(answer.holds);
  EXPECT_EQ(static_cast<int>(answer.reason), static_cast<int>(GetParam().reason));
  // And the next one is read as usual.
  EXPECT_TRUE(ask("text\nWhat follows", "FOLLOWS").holds);
}

/// Only the photograph at hand is blamed.
TEST_P(BehaviourTest, EndsOnePhotograph) {
  std::vector<std::string> paths;
  for (int i = 0; i < 19; ++i)
    paths.push_back(tree_.file(std::to_string(i), i % 8 == 1 ? GetParam().content : "text\nx"));
  ContentService service;
  const std::vector<PhotographContent> found = askPhotographs(service, paths);
  for (std::size_t i = 0; i < found.size(); ++i) {
    const bool isGood = i % 8 != 1;
    const UnreadReason reason = isGood ? UnreadReason::none : GetParam().photographReason;
    EXPECT_EQ(found[i].holds, isGood) << i;
    EXPECT_EQ(static_cast<int>(found[i].reason), static_cast<int>(reason)) << i;
  }
}

constexpr auto crashed = UnreadReason::readerCrashed;
constexpr BehaviourCase behaviourCases[] = {
    {"Nothing", "text\n", UnreadReason::none},
    {"AReason", "reason\n3", UnreadReason::noText},
    {"Open", "open", crashed},
    {"Connect", "connect", crashed},
    {"Fork", "fork", crashed},
    {"Execute", "execute", crashed},
    {"Signal", "signal", crashed},
    {"Trace", "trace", crashed},
    {"ChangePriority", "raise limits", crashed},
    {"Receive", "receive", crashed},
    {"ChangeTheFile", "change the file", crashed},
    {"MoveTheHostsOffset", "seek", crashed},
    {"MapTheFile", "map the file", crashed},
    {"MapCode", "map code", crashed},
    {"Crash", "crash", crashed},
    {"Abort", "abort", crashed},
    {"Throw", "throw", crashed},
    {"LeaveWithoutAWord", "leave", crashed},
    {"MapMoreThanAllowed", "map much", UnreadReason::tooLarge},
    {"FillMemory", "fill memory", UnreadReason::tooLarge},
    {"Spin", "spin", UnreadReason::tookTooLong},
    {"UnknownRecord", "unknown record", crashed},
    {"EmptyRecord", "empty record", crashed},
    {"EmptyText", "empty text", crashed},
    {"HugeRecord", "huge record", crashed},
    {"UnknownReason", "unknown reason", crashed},
    {"EndWithoutReason", "end without reason", crashed},
    {"EndlessText", "endless text", UnreadReason::tooLarge, crashed},
    {"NoParts", "no parts", crashed},
    {"CutPart", "cut part", crashed},
    {"LongPart", "long part", crashed},
    {"HugePart", "huge part", crashed},
    {"UnknownPart", "unknown part", crashed},
    {"TextWithoutName", "text without name", crashed},
    {"EndOfUnknownReason", "end of unknown reason", crashed},
    {"LongCamera", "long camera", crashed},
    {"WorkersEndWithoutReason", "worker's end without reason", UnreadReason::none, crashed},
    {"EndlessFields", "endless fields", crashed, UnreadReason::tooLarge},
};

INSTANTIATE_TEST_SUITE_P(Behaviours, BehaviourTest, testing::ValuesIn(behaviourCases),
                         [](const auto &row) { return row.param.name; });

class ServiceTest : public ServiceFixture {};

/// What follows the end would be taken for the next photograph's, if there were one.
TEST_F(ServiceTest, NothingFollowsTheLastPhotograph) {
  ContentService service;
  for (const char *const lie : {"parts behind the end", "two ends"}) {
    EXPECT_EQ(askPhotographs(service, {tree_.file("lie", lie)})[0].reason, crashed) << lie;
    EXPECT_TRUE(askPhotographs(service, {tree_.file("next", "text\nx")})[0].holds) << lie;
  }
}

TEST_F(ServiceTest, NothingIsReadForAnEmptyKeyword) {
  useLimits(limits(), tree_.path("no program"));
  for (const char *const keyword : {"", "\u00AD"})
    EXPECT_EQ(ask("text\nA word", keyword).reason, UnreadReason::none);
}

TEST_F(ServiceTest, TheMainThreadHasNothingRead) {
  ContentService service;
  const std::string path = tree_.file("document", "text\nA word");
  EXPECT_EQ(service.documentHolds(*string(path), *string("word"), false).reason,
            UnreadReason::noReader);
  const auto keyword = string("word"), photograph = string(path);
  PhotographToRead photographs[] = {{.path = photograph.get()}};
  UnreadReason reason{};
  service.readPhotographs(
      photographs, {.keyword = keyword.get()},
      [&](std::size_t, const PhotographContent &content) { reason = content.reason; });
  EXPECT_EQ(reason, UnreadReason::noReader);
}

TEST_F(ServiceTest, WhatIsAskedAboutPhotographs) {
  ContentService service;
  tree_.file("a.jpg", "sidecar");
  tree_.file("b.jpg", "sidecar");
  tree_.file("b.xmp", "\nbeside it");
  tree_.file("c.jpg", "sidecar");
  tree_.file("c.xmp", "\nnot this");
  tree_.file("c.jpg.xmp", "\nbeside it");
  tree_.file("d.jpg", "date\n6");
  tree_.file("e.jpg", "date\n31");
  tree_.file("f.jpg", "date\n32");
  std::vector<std::string> paths;
  for (const char c : {'a', 'b', 'c', 'd', 'e', 'f', 'g'})
    paths.push_back(tree_.path(std::string(1, c) + ".jpg"));
  const auto found = askPhotographs(service, paths, "BESIDE it", true);
  std::string shown;
  for (const PhotographContent &content : found)
    shown += (content.holds  ? "holds "
              : content.date ? "date "
                             : "nothing ") +
             std::to_string(static_cast<int>(content.reason)) + ", ";
  EXPECT_EQ(shown, "nothing 0, holds 0, holds 0, date 0, date 0, nothing 0, nothing 7, ");
  EXPECT_EQ(*found[4].date - *found[3].date, 25 * 86400);
}

TEST_F(ServiceTest, OnlyRegularFilesAreOpened) {
  ContentService service;
  tree_.file("document", "text\nA word");
  tree_.link("link", tree_.path("document"));
  EXPECT_TRUE(askFile(service, tree_.path("link"), "word").holds);
  for (const std::string &path :
       {tree_.path("missing"), tree_.path(), tree_.fifo("pipe"), std::string("/dev/null")})
    EXPECT_EQ(askFile(service, path, "word").reason, UnreadReason::cannotBeOpened) << path;
}

TEST_F(ServiceTest, AKeywordIsFoundAcrossPieces) {
  std::string content = "text\n";
  content.append(longestPiece - 3, 'y').append("Across");
  content.append(longestPiece, 'y');
  EXPECT_TRUE(ask(content, "ACROSS").holds);
  EXPECT_FALSE(ask(content, "ACROSS", true).holds);
  EXPECT_TRUE(ask(content, "Across", true).holds);
}

TEST_F(ServiceTest, ManyThreadsAskAtOnce) {
  ContentService service;
  std::vector<std::string> paths;
  for (int i = 0; i < 10; ++i)
    paths.push_back(tree_.file("document " + std::to_string(i), "text\nword" + std::to_string(i)));
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 6; ++thread)
    threads.emplace_back([&] {
      for (int i = 0; i < 60; ++i) {
        const std::string keyword = "word" + std::to_string(i * 7 % 10);
        const bool holds =
            service.documentHolds(*string(paths[i % 10]), *string(keyword), false).holds;
        EXPECT_EQ(holds, i % 10 == i * 7 % 10);
      }
    });
  for (std::thread &thread : threads)
    thread.join();
}

TEST_F(ServiceTest, TheProgramBesideTheLibraryReadsDocuments) {
  useLimits(ReaderLimits(), {});
  const std::string document = CompressedDocument::showing("The harbour wall");
  EXPECT_TRUE(ask(document, "harbour WALL").holds);
  EXPECT_EQ(ask(document, "harbours").reason, UnreadReason::none);
  EXPECT_EQ(ask("no document").reason, UnreadReason::damaged);
}

struct Told {
  std::string text;

  static void unread(CFStringRef path, std::int32_t reason, void *context) {
    auto &told = *static_cast<Told *>(context);
    const std::string whole = path->UTF8String();
    told.text += whole.substr(whole.rfind('/') + 1) + ":" + std::to_string(reason) + " ";
  }
};

TEST_F(ServiceTest, UnreadFilesAreToldOnce) {
  Told told;
  PFContentSetUnreadCallback(Told::unread, &told);
  ContentService service;
  PFContentSetUnreadCallback(nullptr, nullptr);
  for (int i = 0; i < 2; ++i)
    askFile(service, tree_.file("scan", "reason\n3"));
  askFile(service, tree_.file("good", "text\n"));
  askFile(service, tree_.file("match", "text\nx"));
  EXPECT_EQ(told.text, "");
  service.deliverUnread();
  EXPECT_EQ(told.text, "scan:3 ");
  service.deliverUnread();
  EXPECT_EQ(told.text, "scan:3 ");
}

TEST_F(ServiceTest, NobodyIsToldOfACancelledReading) {
  Told told;
  PFContentSetUnreadCallback(Told::unread, &told);
  ContentService service;
  service.cancel();
  askFile(service, tree_.path("missing"));
  service.deliverUnread();
  EXPECT_EQ(told.text, "");
}

} // namespace

} // namespace searchsystem
