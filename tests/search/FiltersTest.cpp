#include "FileSharchFunction/SearchSystem/LocaleEncoding.h"
#include "platform/foundation/Localizations.h"
#include "tests/search/SearchFixture.h"

namespace {

using namespace std::string_literals;

class FiltersTest : public SearchFixture {
protected:
  const Ref<SearchEngine> engine{SearchEngine::sharedSearchEngine()};
};

TEST_F(FiltersTest, DefaultFilter) {
  enum Kind { None, File, Folder, Pipe, Link };
  constexpr struct {
    const char *name;
    Kind kind;
    /// The classes of files that it belongs to; "folder" for a folder that may be searched.
    const char *answer;
    const char *target = nullptr;
  } rows[] = {
      {"a.tif", File, "03"},
      {"photo.JPG", File, "023"},
      {"b.Pdf", File, "123"},
      {"pic.pct", File, "3"},
      {"two.tif.jpg", File, "023"},
      {"pipe.jpg", Pipe, "023"},
      {"scan.tiff", File, ""},
      {"e.jpg.", File, ""},
      {"jpg", File, ""},
      {".jpg", File, ""},
      {".hidden.jpg", File, ""},
      {"missing.jpg", None, ""},
      {"plain", Folder, "folder"},
      {"folder.jpg", Folder, "folder"},
      {"an.app", Folder, ""},
      {"f.doc/Contents/Info.plist", File, ""},
      {"f.doc", Folder, ""},
      {"g.doc", Folder, "folder"},
      {".git", Folder, ""},
      {"to file", Link, "", "jpg"},
      {"h.pdf", Link, "123", "jpg"},
      {"i.pdf", Link, "", "dead"},
      {"j.pdf", Link, "", "plain"},
  };
  Words accepted;
  for (const auto &row : rows) {
    SCOPED_TRACE(row.name);
    if (row.kind == File)
      tree.file(row.name);
    else if (row.kind == Folder)
      tree.folder(row.name);
    else if (row.kind == Pipe)
      tree.fifo(row.name);
    else if (row.kind == Link)
      tree.link(row.name, row.target);
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
  Request request = makeRequest("n= f");
  EXPECT_EQ(searchSorted(request), join(accepted) + " !");
}

TEST_F(FiltersTest, IsAlias) {
  const std::pair<std::string, char> rows[] = {
      {tree.file("file"), 0},
      {tree.folder("folder"), 0},
      {tree.link("to", "file"), 1},
      {tree.link("dead", "no"), 1},
      {tree.path("missing"), 1},
      {"/proc", 1},
      {tree.file("bookmark", "book\0\0\0\0mark and so on"s), 1}};
  for (const auto &[path, answer] : rows)
    EXPECT_EQ(engine->isAlias(NSString::create(path).get()), answer) << path;
}

TEST_F(FiltersTest, KeyWordSearch) {
  constexpr struct {
    const char *text;
    const char *keyword;
    char ignoringCase;
    char exactly;
  } rows[] = {{"xABCx", "abc", 1, 0},
              {"xabcx", "abc", 1, 1},
              {"abc", "", 0, 0},
              {"caf\u00e9", "cafe\u0301", 1, 0}};
  for (const auto &[text, keyword, ignoringCase, exactly] : rows) {
    const auto t = NSString::create(text);
    const auto k = NSString::create(keyword);
    EXPECT_EQ(engine->keyWordSearch(t.get(), k.get(), 0), ignoringCase) << text;
    EXPECT_EQ(engine->keyWordSearch(t.get(), k.get(), 1), exactly) << text;
    EXPECT_EQ(engine->keyWordSearch(nullptr, k.get(), 0), 0);
  }
}

TEST_F(FiltersTest, TheEncodingFollowsTheUsersLanguage) {
  using Names = std::vector<std::string_view>;
  const Names all = CFBundleCopyBundleLocalizations();
  const struct {
    const char *locale;
    Names localizations;
    int language;
    std::uint32_t encoding;
  } rows[] = {
      {"ja_JP.UTF-8", all, 0, 1}, {"en_GB.UTF-8", all, 1, 0}, {"en_US", all, 2, 0},
      {"de_AT", all, 3, 0x0201},  {"fr", all, 4, 0x0201},     {"it", all, 5, 0x0201},
      {"es", all, 6, 0x0201},     {"nl", all, 7, 0x0201},     {"C", all, 2, 0},
      {"fr", {"English"}, 2, 0},  {"fr", {}, 0, 1},           {"fr", {"french"}, 0, 1},
  };
  for (const auto &row : rows) {
    LocaleEnvironment environment;
    environment.all = row.locale;
    setLocaleEnvironmentForTesting(&environment);
    setLocalizationsForTesting(&row.localizations);
    EXPECT_EQ(GetCurrentLocaleID(), row.language) << row.locale;
    EXPECT_EQ(engine->getSearchEncoding(), row.encoding) << row.locale;
    setLocalizationsForTesting(nullptr);
    setLocaleEnvironmentForTesting(nullptr);
  }
}

TEST_F(FiltersTest, ResultPoolKnowsWhatWasAdded) {
  ResultPool pool;
  const auto path = [](int number) { return NSString::create("/a/" + std::to_string(number)); };
  for (int i = 0; i < 30'000; ++i) {
    EXPECT_FALSE(pool.contains(*path(i)));
    pool.add(path(i));
    EXPECT_TRUE(pool.contains(*path(i / 2)));
  }
  pool.clear();
  EXPECT_FALSE(pool.contains(*path(1)));
}

} // namespace
