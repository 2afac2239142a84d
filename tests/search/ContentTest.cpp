#include "testing/DocumentWriter.h"
#include "testing/PhotoFile.h"
#include "testing/SystemCallsGuard.h"
#include "testing/WaitForThreads.h"
#include "tests/search/SearchFixture.h"
#include "tests/support/TimeZone.h"

#include <memory>

namespace searchsystem {

namespace {

std::string photo(const char *date, const char *comment = "", const char *maker = "Acme") {
  PhotoTags tags = PhotoTags::photo().text(0, 0x010F, maker).comment("ASCII", comment);
  if (*date != '\0')
    tags.taken(date);
  return jpegFile({tags.exifSegment()});
}

/// Seconds from 2001 to noon of a day of January 2010, UTC.
std::string day(int number) { return std::to_string((3287 + number - 1) * 86400 + 43200); }

class ContentTest : public SearchFixture {
protected:
  ContentTest() {
    tree.file("early.jpg", photo("2010:01:05 12:00:00", "a sunny beach"));
    tree.file("late.jpg", photo("2010:01:20 12:00:00", "mountains"));
    tree.file("digital.jpg", jpegFile({PhotoTags::photo()
                                           .text(1, 0x9004, "2010:01:07 12:00:00")
                                           .text(0, 0x010E, "BEACH")
                                           .exifSegment()}));
    tree.file("unknown.jpg", photo("0000:00:00 00:00:00", "", "Beach Cameras"));
    tree.file("scan.tif", PhotoTags::photo(ByteOrder::Big)
                              .taken("2010:01:06 12:00:00")
                              .text(0, 0x0110, "beach")
                              .tiff());
    tree.file("in/text.pdf", documentShowing({"the beach in winter"}));
    tree.file("other.pdf", documentShowing({"nothing"}));
    tree.file("beach.pct", "beach");
    tree.file("plain.jpg", "beach");
  }

  const TimeZone zone{"UTC"};
};

TEST_F(ContentTest, Conditions) {
  const std::string early = "S=" + day(5), seventh = "E=" + day(7), range = early + " " + seventh;
  expectFound({
      {"c=beach x", "digital.jpg early.jpg scan.tif unknown.jpg",
       "digital.jpg early.jpg scan.tif unknown.jpg"},
      {"c=beach x d", "early.jpg scan.tif", "early.jpg scan.tif"},
      {"c=beach p", "in/text.pdf", "in/text.pdf"},
      {"c=Beach p d", "", ""},
      {"c=beach x p", "digital.jpg early.jpg in/text.pdf unknown.jpg",
       "digital.jpg early.jpg in/text.pdf scan.tif unknown.jpg"},
      {range, "digital.jpg early.jpg scan.tif", "digital.jpg early.jpg scan.tif"},
      {"S=" + day(6), "digital.jpg late.jpg scan.tif", "digital.jpg late.jpg scan.tif"},
      {"E=" + day(6), "early.jpg scan.tif", "early.jpg scan.tif"},
      {"c=beach x " + range, "digital.jpg early.jpg scan.tif",
       "digital.jpg early.jpg scan.tif unknown.jpg"},
      {"c=beach x p " + range, "digital.jpg early.jpg",
       "digital.jpg early.jpg in/text.pdf scan.tif unknown.jpg"},
      {"c=beach p " + range, "", "digital.jpg early.jpg in/text.pdf scan.tif"},
      {"c=acme x n=late", "late.jpg", "early.jpg late.jpg"},
      {"c=beach p n=text", "in/text.pdf", "in/text.pdf"},
      {"c= x " + range, "digital.jpg early.jpg scan.tif", "digital.jpg early.jpg scan.tif"},
      {"c= p", "", ""},
  });
}

TEST_F(ContentTest, ListOfFiles) {
  Request request = makeRequest("c=beach x p");
  request.setList({tree.path("unknown.jpg"), tree.path("late.jpg"), tree.path("in/text.pdf")});
  EXPECT_EQ(search(request), "unknown.jpg in/text.pdf !");

  // A host may have closed its standard input: 0 is a descriptor like any other.
  const int input = dup(STDIN_FILENO);
  close(STDIN_FILENO);
  EXPECT_EQ(search(request), "unknown.jpg in/text.pdf !");
  EXPECT_EQ(found("c=acme x n=late"), "late.jpg") << "the listing of the folder";
  EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1) << "closed again";
  dup2(input, STDIN_FILENO);
  close(input);
}

/// A match is tested by the worker and before it is delivered; the second test may rely on the
/// first while the file is the same.
TEST_F(ContentTest, FilesThatHaveNotChangedAreReadOnce) {
  static std::int64_t age;
  static bool hasChanged;
  const auto changing = [](int at, const char *path, int flags, struct statx *status) {
    const int result = realSystemCalls().statusAt(at, path, flags, status);
    status->stx_ctime.tv_sec -= age;
    // The second time the file is asked for by its path.
    if (hasChanged && std::string_view(path).ends_with("late.jpg"))
      ++status->stx_ctime.tv_nsec;
    return result;
  };
  constexpr struct {
    const char *name;
    std::int64_t age;
    bool hasChanged;
    int reads;
  } rows[] = {{"new", 0, false, 2}, {"old", 100, false, 1}, {"changed", 100, true, 2}};
  for (const auto &row : rows) {
    age = row.age;
    hasChanged = row.hasChanged;
    const SystemCallsGuard guard({.statusAt = changing});
    EXPECT_EQ(search("c=mountains x n=late"), "late.jpg !");
    EXPECT_EQ(guard.counts().openAt, 2 + row.reads) << "two folders and the file: " << row.name;
  }
}

/// A cancel while a file is being tested: what is still to be read of it is not.
TEST_F(ContentTest, CancelEndsTheReadingAtHand) {
  static std::atomic<char> *isCancelled;
  const auto cancelAtStatus = [](int at, const char *path, int flags, struct statx *status) {
    *isCancelled = std::string_view(path).ends_with(".pdf") ? 1 : 0;
    return realSystemCalls().statusAt(at, path, flags, status);
  };
  const auto cancelAtRead = [](int file, void *buffer, std::size_t size, off_t offset) {
    *isCancelled = 1;
    return realSystemCalls().readAt(file, buffer, size, offset);
  };
  tree.file("large.tif", PhotoTags::photo().text(0, 0x010F, "shore").tiff(50'000));
  const struct {
    const char *words, *path;
    SystemCalls calls;
    int reads;
  } rows[] = {{"c=beach p", "in/text.pdf", {.statusAt = cancelAtStatus}, 0},
              {"c=shore x", "large.tif", {.readAt = cancelAtRead}, 1},
              {"c=shore x o", "large.tif", {.readAt = cancelAtRead}, 1}};
  for (const auto &row : rows) {
    reset();
    SearchEngineProbe probe;
    isCancelled = &probe.isCancelled;
    const SystemCallsGuard guard(row.calls);
    Request request = makeRequest(row.words);
    request.setList({tree.path(row.path)});
    SS_SearchStart(&request);
    finish();
    EXPECT_EQ(told(), "!") << row.words;
    EXPECT_EQ(guard.counts().readAt, row.reads) << row.words;
    EXPECT_TRUE(isAt(hosts[0].endTime, 1.5)) << row.words;
  }
}

TEST_F(ContentTest, OnlyRegularFilesAreOpened) {
  tree.fifo("pipe.jpg");
  tree.fifo("pipe.pdf");
  EXPECT_EQ(found("c=beach x p o"), "digital.jpg early.jpg in/text.pdf scan.tif unknown.jpg");
}

TEST_F(ContentTest, PoolOfDocuments) {
  Request request = makeRequest("c=beach p f");
  request.setList({});
  SearchEngineProbe probe;
  probe.begin(request);
  gSearchPredicate = &request;
  for (int i = 0; i < 9; ++i)
    probe.engine.PDFSearchPool(NSString::create(tree.path("in/text.pdf")).get());
  EXPECT_EQ(probe.pdfThreadCount, 5);
  EXPECT_EQ(probe.pdfPool.size(), 4U);
  finish();
  EXPECT_EQ(told(), "!");
  EXPECT_TRUE(isAt(hosts[0].endTime, 1.5));
}

TEST_F(ContentTest, PoolOfDocumentsOutlivesTheRecord) {
  auto request = std::make_unique<Request>(makeRequest("c=beach p"));
  SearchEngineProbe probe;
  probe.begin(*request);
  for (int i = 0; i < 5; ++i)
    probe.engine.PDFSearchPool(NSString::create(tree.path("in/text.pdf")).get());
  SearchEngine::releaseSharedSearchEngine();
  request = nullptr;
  waitForThreads();
}

} // namespace

} // namespace searchsystem
