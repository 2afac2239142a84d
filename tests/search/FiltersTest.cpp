#include "tests/search/SearchFixture.h"

#include <filesystem>

namespace searchsystem {

namespace {

using FiltersTest = SearchFixture;

TEST_F(FiltersTest, DefaultFilter) {
  const Ref<SearchEngine> engine{SearchEngine::sharedSearchEngine()};
  // A kind other than these is where a link leads to. The answer has the classes of files that it
  // belongs to, or tells of a folder that may be searched.
  constexpr std::string_view file = "file", folder = "folder", pipe = "pipe";
  constexpr struct {
    const char *name;
    std::string_view kind;
    const char *answer;
  } rows[] = {{"a.tif", file, "03"},
              {"photo.JPG", file, "023"},
              {"b.Pdf", file, "123"},
              {"pic.pct", file, "3"},
              {"pipe.jpg", pipe, "023"},
              {"scan.tiff", file, ""},
              {"e.jpg.", file, ""},
              {".jpg", file, ""},
              {"jpg", file, ""},
              {"plain", folder, "folder"},
              {"g.doc", folder, "folder"},
              {"an.app", folder, ""},
              {"f.doc/Contents/Info.plist", file, ""},
              {"f.doc", folder, ""},
              {".git", folder, ""},
              {"to file", "jpg", ""},
              {"h.pdf", "jpg", "123"},
              {"i.pdf", "nothing", ""},
              {"j.pdf", "plain", ""}};
  Words accepted;
  for (const auto &row : rows) {
    SCOPED_TRACE(row.name);
    if (row.kind == file || row.kind == folder)
      row.kind == file ? tree.file(row.name) : tree.folder(row.name);
    else
      row.kind == pipe ? tree.fifo(row.name) : tree.link(row.name, std::string(row.kind));
    const Ref<const NSString> path = NSString::create(tree.path(row.name));
    std::string answer;
    char isFolder = 2;
    for (int type = -1; type <= 4; ++type)
      if (engine->defaultFilter(path.get(), type, &isFolder) == 1)
        answer += std::to_string(type);
    EXPECT_EQ(answer + (isFolder == 0 ? "" : "folder"), row.answer);
    if (answer.ends_with('3'))
      accepted.emplace_back(row.name);
  }

  // A walk judges by its listing, and must come to the same.
  std::sort(accepted.begin(), accepted.end());
  EXPECT_EQ(found("n= f"), join(accepted));
}

TEST_F(FiltersTest, Aliases) {
  const Ref<SearchEngine> engine{SearchEngine::sharedSearchEngine()};
  const std::pair<std::string, int> rows[] = {{tree.file("file"), 0},
                                              {tree.folder("folder"), 0},
                                              {tree.link("link", "file"), 1},
                                              {tree.path("missing"), 1},
                                              {"", 1},
                                              {"/proc", 1}};
  EXPECT_EQ(engine->isAlias(nullptr), 0);
  for (const auto &[path, expected] : rows)
    EXPECT_EQ(engine->isAlias(NSString::create(path).get()), expected) << path;
}

TEST_F(FiltersTest, DatesOfModification) {
  const Ref<SearchEngine> engine{SearchEngine::sharedSearchEngine()};
  const Ref<const NSString> path = NSString::create(tree.file("file"));
  constexpr std::int64_t secondsTo2001 = 978'307'200;
  tree.setModified("file", secondsTo2001 + 1000);
  const auto date = &NSDate::dateWithTimeIntervalSinceReferenceDate;
  const Ref<const NSDate> before = date(999), exact = date(1000), after = date(1001);
  const auto passes = [&](const Ref<const NSDate> &start, const Ref<const NSDate> &end) {
    return engine->fileModDateSearch(path.get(), start.get(), end.get()) != 0;
  };
  EXPECT_TRUE(passes({}, {}) && passes(exact, exact) && passes(before, {}) && passes({}, after));
  EXPECT_FALSE(passes(after, {}) || passes({}, before) || passes(after, before));
  std::filesystem::remove(tree.path("file"));
  EXPECT_TRUE(passes(after, before)) << "without a date";
}

} // namespace

} // namespace searchsystem
