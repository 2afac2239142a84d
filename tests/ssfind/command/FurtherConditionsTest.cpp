#include "testing/PhotoFile.h"
#include "tests/ssfind/command/Command.h"

namespace searchsystem {

namespace {

/// Conditions and places that one search of the library cannot have.
class FurtherConditionsTest : public CommandTest {
protected:
  void photo(const std::string &path, const std::string &comment, std::size_t size = 0) {
    std::string bytes = jpegFile({PhotoTags::photo().comment("ASCII", comment).exifSegment()});
    bytes.resize(std::max(size, bytes.size()));
    tree.file(path, bytes);
  }
};

TEST_F(FurtherConditionsTest, SeveralNamesKeywordsAndPatterns) {
  photo("beach_01.jpg", "sand and sea");
  photo("beach_2.jpg", "sand");
  photo("in/Beach at dawn.jpeg", "sea, sky");
  photo("in/dawn.tmp/beach.jpg", "sea and sand", 5000);
  tree.file("in/beach.pdf", "damaged");
  expect({
      {{"-n", "BEACH", "-n", "dawn"}, "./in/Beach at dawn.jpeg\n"},
      {{"-n", "beach", "-n", "_", "-s"}, "./beach_01.jpg\n./beach_2.jpg\n"},
      {{"-n", "beach", "-n", "dawn", "-n", "x"}, "", "", 1},
      {{"--any", "-n", "_2", "-n", "dawn", "-n", "at"}, "./beach_2.jpg\n./in/Beach at dawn.jpeg\n"},
      {{"-g", "-n", "*_?.jpg"}, "./beach_2.jpg\n"},
      {{"--regex", "-n", "_[0-9]+\\.", "-n", "1"}, "./beach_01.jpg\n"},
      {{"--regex", "--any", "-n", "_\\d\\.", "-n", "^beach\\.j"},
       "./beach_2.jpg\n./in/dawn.tmp/beach.jpg\n"},
      {{"--glob", "-n", "BEACH*", "-s"}, "", "", 1},
      {{"-k", "sea", "-k", "SAND", "-e", "jpg"}, "./beach_01.jpg\n./in/dawn.tmp/beach.jpg\n"},
      {{"-k", "sea", "-k", "sand", "-k", "rock", "-e", "jpg"}, "", "", 1},
      {{"-k", "sky", "-k", "sand", "--any", "-e", "jpg", "-e", "jpeg", "-n", "x"},
       "./beach_01.jpg\n./beach_2.jpg\n./in/Beach at dawn.jpeg\n./in/dawn.tmp/beach.jpg\n"},
      {{"-k", "sea", "-g", "-n", "beach?*.jp*"}, "./beach_01.jpg\n./in/Beach at dawn.jpeg\n"},
      {{"-k", "sea", "-S", "1k.."}, "./in/dawn.tmp/beach.jpg\n"},
      {{"-S", "..0"}, "", "", 1},
      {{"-S", "7"}, "./in/beach.pdf\n"},
      {{"--any", "-k", "sky", "-n", "_", "-E", "in"}, "./beach_01.jpg\n./beach_2.jpg\n"},
      {{"-k", "sea", "-n", "beach", "--count", "-d2"},
       "2\n",
       "ssfind: 1 file could not be read: damaged (1) (--unread lists them)\n"},
      {{"-k", "sea", "-n", "beach", "--count", "-E", "*.pdf"}, "3\n"},
      {{"--files-from", "-", "-E", "in/", "-k", "sand", "-k", "sea"},
       "./beach_01.jpg\n",
       "",
       0,
       "./beach_01.jpg\nbeach_2.jpg\n./in/dawn.tmp/beach.jpg\n"},
  });
}

TEST_F(FurtherConditionsTest, DepthExclusionsAndHiddenFolders) {
  for (const char *path : {"a.jpg", "P/b.jpg", "P/Q/c.jpg", "P/.h/d.jpg", "P/.h/.i/e.jpg",
                           "P/.h/j/f.jpg", "P/x.app/.h/g.jpg", ".h/.k.jpg", "tmp/l.jpg"})
    tree.file(path);
  tree.link("P/.link", tree.path("P/Q"));
  const std::string hidden = "P/.h/.i/e.jpg\nP/.h/d.jpg\nP/.h/j/f.jpg\n";
  expect({
      {{"-d1"}, "./a.jpg\n"},
      {{"-d", "2"}, "./P/b.jpg\n./a.jpg\n./tmp/l.jpg\n"},
      {{".", "P", "--max-depth=2", "--count"}, "4\n"},
      {{"P", "tmp", "-E", "tmp", "-E", "Q"}, "P/b.jpg\ntmp/l.jpg\n"},
      {{"P", "-H"}, hidden + "P/Q/c.jpg\nP/b.jpg\n"},
      {{"P", "P/.h", "-H", "-E", "Q"}, hidden + "P/b.jpg\n"},
      {{"P", "-H", "-d2"}, "P/.h/d.jpg\nP/Q/c.jpg\nP/b.jpg\n"},
      {{"P", "-H", "-d1"}, "P/b.jpg\n"},
      {{"P", "-H", "-E", ".i", "-g", "-n", "[d-f].*"}, "P/.h/d.jpg\nP/.h/j/f.jpg\n"},
      {{"P/.h", "-E", "/j"}, "P/.h/d.jpg\n"},
  });
}

} // namespace

} // namespace searchsystem
