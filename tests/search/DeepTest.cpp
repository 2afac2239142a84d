#include "platform/content/ReaderConnection.h"
#include "platform/foundation/NSThread.h"
#include "testing/CompressedDocument.h"
#include "testing/DocumentWriter.h"
#include "testing/PhotoFile.h"
#include "testing/SystemCallsGuard.h"
#include "testing/WaitForThreads.h"
#include "tests/search/SearchFixture.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <latch>
#include <list>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace searchsystem {

namespace {

/// Searches by a host that wants them deep and is told what could not be read, "name:reason" among
/// the results.
class DeepTest : public SearchFixture {
protected:
  DeepTest() {
    PFContentSetDepth(PFContentDeep);
    PFContentSetUnreadCallback(unread, this);
  }
  ~DeepTest() override {
    reset();
    PFContentSetDepth(PFContentPlain);
    PFContentSetUnreadCallback(nullptr, nullptr);
    PFContentSetExtensions(nullptr);
    ReaderConnection::shared().useForTesting({}, {});
  }

  static void unread(CFStringRef path, std::int32_t reason, void *context) {
    auto &test = *static_cast<DeepTest *>(context);
    EXPECT_TRUE(MainRunLoop::shared().isMainThread());
    test.hosts[0].words.push_back(test.relative(path->view()) + ":" + std::to_string(reason));
    test.onUnread();
  }

  /// Documents say what their reader does: see tests/content/reader.
  static void useScriptedReader() {
    ReaderConnection::shared().useForTesting(SCRIPTED_READER, {.processorSeconds = 1});
  }

  std::string searchList(const std::string &words, const Words &names) {
    Request request = makeRequest(words);
    Words paths;
    for (const std::string &name : names)
      paths.push_back(tree.path(name));
    request.setList(paths);
    return search(request);
  }

  std::function<void()> onUnread = [] {};
};

TEST_F(DeepTest, Conditions) {
  PFContentSetUnreadCallback(nullptr, nullptr);
  const std::string photo = jpegFile(
      {PhotoTags::photo().comment("ASCII", "harbour").taken("2010:01:05 12:00:00").exifSegment()});
  tree.file("classic.pdf", documentShowing({"the harbour"}));
  tree.file("other.pdf", CompressedDocument::showing("nothing"));
  tree.file("in/packed.PDF", CompressedDocument::showing("The harbour"));
  tree.file("in/photo.jpg", photo);
  tree.file("photo.jpeg", photo);
  tree.file("scan.tiff", PhotoTags::photo().text(0, 0x010E, "harbour").tiff());
  tree.file("harbour.webp", "");
  tree.file("harbour.eps", CompressedDocument::showing("harbour"));
  tree.file("harbour.txt", CompressedDocument::showing("harbour"));
  const struct {
    const char *words, *plain, *deep;
  } rows[] = {
      {"c=harbour p", "classic.pdf", "classic.pdf in/packed.PDF"},
      {"c=HARBOUR p", "classic.pdf", "classic.pdf in/packed.PDF"},
      {"c=The p d", "", "in/packed.PDF"},
      {"c=harbour p f", "classic.pdf", "classic.pdf"},
      {"c=harbour p n=pack", "", "in/packed.PDF"},
      {"c=harbour p n=webp o", "classic.pdf", "classic.pdf harbour.webp in/packed.PDF"},
      {"c=harbour x", "in/photo.jpg", "in/photo.jpg photo.jpeg scan.tiff"},
      {"c=harbour x p", "classic.pdf in/photo.jpg",
       "classic.pdf in/packed.PDF in/photo.jpg photo.jpeg scan.tiff"},
      {"c=harbour x p o", "classic.pdf in/photo.jpg",
       "classic.pdf in/packed.PDF in/photo.jpg photo.jpeg scan.tiff"},
      {"c=harbour p S=0", "", ""},
      {"c= p", "", ""},
      {"n=harbour", "", "harbour.eps harbour.webp"},
      {"n=photo", "in/photo.jpg", "in/photo.jpg photo.jpeg"},
      {"s=0 e=9e9 n=scan", "", "scan.tiff"},
      {"n=scan c= x p o", "", "scan.tiff"},
  };
  for (const int systemVersion : {0x1040, 0x1058})
    for (const auto &row : rows) {
      SCOPED_TRACE(std::string(row.words) + (systemVersion == 0x1058 ? ", index" : ""));
      setSystemVersionForTesting(systemVersion);
      EXPECT_EQ(found(row.words), row.deep);
      // The ends of the walk and of the query.
      EXPECT_TRUE(isAt(hosts[0].endTime, 1.5) || isAt(hosts[0].endTime, 0.5));
      if (systemVersion == 0x1058)
        continue;
      PFContentSetDepth(PFContentPlain);
      EXPECT_EQ(found(row.words), row.plain);
      PFContentSetDepth(PFContentDeep);
    }
}

TEST_F(DeepTest, TheHostMayNarrowTheKinds) {
  makeFiles({"a.jpg", "b.HEIC", "c.sketch", "d.pdf"});
  for (const int systemVersion : {0x1040, 0x1058}) {
    setSystemVersionForTesting(systemVersion);
    PFContentSetExtensions(arrayOf({"heic", "Sketch"}).get());
    EXPECT_EQ(found("n="), "b.HEIC c.sketch");
    PFContentSetExtensions(nullptr);
    EXPECT_EQ(found("n="), "a.jpg b.HEIC d.pdf");
  }
}

TEST_F(DeepTest, WhatCouldNotBeReadIsToldOnceBeforeTheEnd) {
  useScriptedReader();
  for (int reason = 1; reason <= 3; ++reason)
    tree.file(std::to_string(reason) + ".pdf", "reason\n" + std::to_string(reason));
  tree.file("4.pdf", "text\nThe Harbour");
  tree.file("5.pdf", "crash");
  tree.file("6.pdf", documentShowing({"the harbour"}));
  tree.file("7.eps", "reason\n1");
  const char *const rows[] = {"c=harbour p", "c=harbour p o", "c=harbour x p", "c=harbour x p o"};
  for (const char *const words : rows) {
    EXPECT_EQ(found(words), "1.pdf:1 2.pdf:2 3.pdf:3 4.pdf 5.pdf:6 6.pdf") << words;
    EXPECT_EQ(searchList(words, {"1.pdf", "4.pdf", "1.pdf", "4.pdf"}), "4.pdf 4.pdf 1.pdf:1 !");
  }
  EXPECT_EQ(found("n=1 c=none p o"), "1.pdf 2.pdf:2 3.pdf:3 5.pdf:6") << "known by its name";
  EXPECT_EQ(found("n=1"), "1.pdf");
  EXPECT_EQ(found("c= p"), "");
}

TEST_F(DeepTest, Photographs) {
  useScriptedReader();
  tree.file("a.jpg", "text\nThe Harbour");
  tree.file("b.tiff", "crash");
  tree.file("c.heic", "date\n6");
  tree.file("d.png", "reason\n2");
  tree.file("e.eps", "text\nharbour");
  tree.file("f.pdf", "text\nharbour");
  tree.file("g.cr3", "text\n");
  tree.file("h.jpg", jpegFile({PhotoTags::photo()
                                   .comment("ASCII", "harbour")
                                   .taken("2004:05:06 12:00:00")
                                   .exifSegment()}));
  const std::string inMay = " S=105300000 E=105700000", inApril = " S=102700000 E=105000000";
  const struct {
    std::string words, found;
  } rows[] = {
      {"c=harbour x", "a.jpg b.tiff:6 d.png:2 h.jpg"},
      {"c=harbour x d", "b.tiff:6 d.png:2 h.jpg"},
      {"c=harbour x p", "a.jpg b.tiff:6 d.png:2 f.pdf h.jpg"},
      {"c=harbour x p o", "a.jpg b.tiff:6 d.png:2 f.pdf h.jpg"},
      {"c=harbour p o", "f.pdf"},
      {inMay, "b.tiff:6 c.heic d.png:2 h.jpg"},
      {inApril, "b.tiff:6 d.png:2"},
      {"c=harbour x" + inMay, "b.tiff:6 d.png:2 h.jpg"},
      {"c=harbour x o" + inMay, "a.jpg b.tiff:6 c.heic d.png:2 h.jpg"},
      {"c=harbour p" + inMay, ""},
      {"n=a c=harbour x", "a.jpg"},
      // Without a keyword all of the kind meet it, and no reader is asked.
      {"c= x", "a.jpg b.tiff c.heic d.png g.cr3 h.jpg"},
  };
  for (const auto &row : rows)
    EXPECT_EQ(found(row.words), row.found) << row.words;
}

/// In folders that are listed at once, and in pieces.
TEST_F(DeepTest, WhatStandsBesideAPhotograph) {
  useScriptedReader();
  tree.file("1.jpg", "sidecar");
  tree.file("2.jpg", "sidecar");
  tree.file("3.jpg", "text\nharbour");
  for (const int others : {0, 1'200}) {
    for (int i = 0; i < others; ++i)
      tree.file("a file of another kind, with a long name " + std::to_string(i), "");
    EXPECT_EQ(found("c=harbour x"), "3.jpg") << others;
    tree.file("1.xmp", "\nharbour");
    EXPECT_EQ(found("c=harbour x"), "1.jpg 3.jpg") << others;
    tree.file("2.jpg.xmp", "\nharbour");
    EXPECT_EQ(found("c=harbour x"), "1.jpg 2.jpg 3.jpg") << others;
    std::filesystem::remove(tree.path("1.xmp"));
    std::filesystem::remove(tree.path("2.jpg.xmp"));
  }
}

TEST_F(DeepTest, WhatAHostMayDoWhenToldOfAFile) {
  useScriptedReader();
  const struct {
    const char *name;
    std::function<void(Request &)> act;
    int endsAt = 0;
  } rows[] = {{"cancel", [](Request &) { SS_SearchCancel(); }},
              {"start", [](Request &other) { SS_SearchStart(&other); }, 1},
              {"dispatch", [](Request &) { drain(); }},
              {"throw", [](Request &) { throw 1; }}};
  tree.file("1.pdf", "reason\n1");
  tree.file("2.pdf", "reason\n2");
  for (const auto &row : rows) {
    SCOPED_TRACE(row.name);
    reset();
    Request request = makeRequest("c=k p");
    Request other = makeRequest<1>("n=");
    onUnread = [&] { row.act(other); };
    SS_SearchStart(&request);
    finish();
    EXPECT_EQ(sortedResults(), "1.pdf:1 2.pdf:2");
    EXPECT_TRUE(told(row.endsAt).ends_with("!"));
    EXPECT_EQ(told(1), row.endsAt == 1 ? "!" : "");
  }
}

/// A list, and one folder, of more files than are tested ahead.
TEST_F(DeepTest, FilesThatAreTestedAheadAreReportedInOrder) {
  useScriptedReader();
  Words names, matches, byNameToo, withPhotos;
  for (int i = 0; i < 400; ++i) {
    const std::string number = std::to_string(i);
    const bool isPhoto = i % 8 != 0, holds = i % 3 == 0;
    names.push_back((i % 7 == 0 ? "seven" : "") + number + (isPhoto ? ".jpg" : ".pdf"));
    tree.file(names.back(), holds ? "text\nharbour" : "text\n");
    if (holds)
      withPhotos.push_back(names.back());
    if (holds && !isPhoto)
      matches.push_back(names.back());
    if ((holds && !isPhoto) || i % 7 == 0)
      byNameToo.push_back(names.back());
  }
  EXPECT_EQ(searchList("c=harbour p", names), join(matches) + " !");
  EXPECT_EQ(searchList("c=harbour p o n=seven", names), join(byNameToo) + " !");
  EXPECT_EQ(searchList("c=harbour x p", names), join(withPhotos) + " !");
  EXPECT_EQ(searchList("c=harbour x p o", names), join(withPhotos) + " !");
  std::sort(matches.begin(), matches.end());
  EXPECT_EQ(found("c=harbour p"), join(matches));
}

/// A match does not wait for the files behind it, and a cancel for none that is being read.
TEST_F(DeepTest, CancelWhileDocumentsAreRead) {
  // The others may be the first to be read: it is found once they took too long.
  ReaderConnection::shared().useForTesting(SCRIPTED_READER, {.milliseconds = 500});
  PFContentSetUnreadCallback(nullptr, nullptr);
  Words names{"match.pdf"};
  tree.file("match.pdf", "text\nharbour");
  for (int i = 0; i < 300; ++i)
    tree.file(names.emplace_back(std::to_string(i) + ".pdf"), i == 0 ? "slow text" : "sleep");
  hosts[0].onResult = [] { SS_SearchCancel(); };
  for (const char *const words : {"c=harbour p", "c=harbour p o", "c=harbour x p"}) {
    reset();
    Request request = makeRequest(words);
    Words paths;
    for (const std::string &name : names)
      paths.push_back(tree.path(name));
    request.setList(paths);
    hosts[0].onResult = [] { SS_SearchCancel(); };
    SS_SearchStart(&request);
    finish();
    EXPECT_EQ(told(), "match.pdf !") << words;
    EXPECT_TRUE(isAt(hosts[0].endTime, 1.5));
  }
}

/// The reader's processes are none of the host's, whatever it does with its own.
TEST_F(DeepTest, HostsWithProcessesOfTheirOwn) {
  useScriptedReader();
  for (int i = 0; i < 8; ++i)
    tree.file(std::to_string(i) + ".pdf", i < 6 ? "text\nharbour" : i < 7 ? "crash" : "reason\n2");
  static std::atomic<int> signals{0};
  const auto hasNoChild = [] { return waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD; };
  const auto executes = [] {
    const pid_t process = fork();
    if (process == 0) {
      execl("/bin/true", "true", nullptr);
      _exit(1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(process, &status, 0), process);
    EXPECT_EQ(status, 0);
  };
  const struct {
    const char *name;
    sighandler_t handler;
    std::function<void()> act;
    bool reapsAllTheTime = false;
  } rows[] = {
      {"a handler", [](int) { ++signals; }, [] {}},
      {"children ignored", SIG_IGN, [] {}},
      {"reaping", SIG_DFL, [&] { EXPECT_TRUE(hasNoChild()); }},
      {"reaping all the time", SIG_DFL, [] {}, true},
      {"fork and exec", SIG_DFL, executes},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.name);
    reset();
    ReaderConnection::shared().useForTesting(SCRIPTED_READER, {});
    const auto before = signal(SIGCHLD, row.handler);
    std::atomic<bool> isOver{!row.reapsAllTheTime};
    std::thread reaper([&] {
      while (!isOver)
        EXPECT_TRUE(hasNoChild());
    });
    hosts[0].onResult = row.act;
    Request request = makeRequest("c=harbour p");
    SS_SearchStart(&request);
    finish();
    EXPECT_EQ(sortedResults(), "0.pdf 1.pdf 2.pdf 3.pdf 4.pdf 5.pdf 6.pdf:6 7.pdf:2");
    isOver = true;
    reaper.join();
    EXPECT_TRUE(hasNoChild());
    EXPECT_EQ(signals, 0);
    signal(SIGCHLD, before);
  }
}

/// The distribution tests again where all conditions must hold, on the main thread, which has
/// nothing read deep.
TEST_F(DeepTest, TheWorkersAnswersHold) {
  useScriptedReader();
  const auto changing = [](int at, const char *path, int flags, struct statx *status) {
    static std::atomic<std::uint32_t> tick{0};
    const int result = realSystemCalls().statusAt(at, path, flags, status);
    status->stx_ctime.tv_nsec = ++tick;
    return result;
  };
  std::string all;
  for (int i = 0; i < 9; ++i) {
    const std::string name = std::to_string(i) + "/a.pdf";
    tree.file(name, "text\nharbour");
    all += (i == 0 ? "" : " ") + name;
  }
  const SystemCallsGuard guard({.statusAt = changing});
  for (const bool isWaiting : {false, true}) {
    reset();
    Request request = makeRequest("c=harbour p");
    hosts[0].onResult = [&] {
      for (int i = 0; isWaiting && i < 10; ++i)
        CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.001, 1);
    };
    SS_SearchStart(&request);
    finish();
    EXPECT_EQ(sortedResults(), all) << "results that come in the host's callback: " << isWaiting;
  }
}

/// Keeps the threads of earlier searches, which may still be idle, at work.
class BusyThreads {
public:
  ~BusyThreads() { waitForThreads(); }
  void takeOne() { NSThread::detachNewThread(jobs_.emplace_back(gate_)); }
  void letGo() { gate_.count_down(); }

private:
  struct Job final : ThreadJob {
    explicit Job(std::latch &gate) noexcept : gate_(gate) {}
    void main() override {
      if (!MainRunLoop::shared().isMainThread())
        gate_.wait();
    }
    void ended() noexcept override {}
    std::latch &gate_;
  };

  std::latch gate_{1};
  std::list<Job> jobs_;
};

TEST_F(DeepTest, WithoutThreadsNothingIsReadDeep) {
  useScriptedReader();
  tree.file("1.pdf", "text\nharbour");
  tree.file("2.pdf", documentShowing({"harbour"}));
  tree.file("3.png", "text\nharbour");
  const auto fail = [](pthread_t *, const pthread_attr_t *, void *(*)(void *), void *) {
    return EAGAIN;
  };
  const SystemCallsGuard guard({.startThread = fail});
  const struct {
    const char *words, *found;
  } rows[] = {{"c=harbour p", "1.pdf:8 2.pdf"},
              {"c=harbour p o", "1.pdf:8 2.pdf"},
              {"c=harbour x p", "1.pdf:8 2.pdf 3.png:8"}};
  for (const auto &row : rows) {
    reset();
    guard.resetCounts();
    BusyThreads threads;
    while (guard.counts().startThread == 0)
      threads.takeOne();
    // Until then they hold the clock.
    hosts[0].onResult = [&] { threads.letGo(); };
    Request request = makeRequest(row.words);
    SS_SearchStart(&request);
    finish();
    EXPECT_EQ(sortedResults(), row.found) << row.words;
  }
}

} // namespace

} // namespace searchsystem
