#include "tests/ssfind/command/Command.h"

#include <sys/mount.h>
#include <sys/stat.h>

namespace {

class SearchTest : public CommandTest {
protected:
  struct Row {
    std::vector<std::string> arguments;
    std::string out;
    std::string err = "";
    int code = 0;
  };

  SearchTest() {
    for (const char *path : {"P/beach.jpg", "P/a/BEACH.JPG", "P/a/b/scan.pdf", "P/a/b/note.txt",
                             "P/.hidden/beach.jpg", "Q/beach.tif"})
      tree.file(path);
  }

  void expect(const std::vector<Row> &rows) {
    for (const Row &row : rows)
      EXPECT_EQ(sorted(run(row.arguments)), (Outcome{row.code, row.out, row.err}));
  }
};

TEST_F(SearchTest, Conditions) {
  tree.setModified("P/a/b/scan.pdf", 1715934600);
  tree.setModified("P/beach.jpg", 1715934600);
  const std::string all = "P/a/BEACH.JPG\nP/a/b/scan.pdf\nP/beach.jpg\n";
  expect({
      {{"P"}, all},
      {{"P", "--any"}, all},
      {{"P", "-n", ""}, all},
      {{"P", "-n", "Beach"}, "P/a/BEACH.JPG\nP/beach.jpg\n"},
      {{"P", "-n", "Beach", "--no-index"}, "P/a/BEACH.JPG\nP/beach.jpg\n"},
      {{"P", "-s", "-n", "beach"}, "P/beach.jpg\n"},
      {{"P", "--no-subfolders"}, "P/beach.jpg\n"},
      {{"P", "-n", "beach", "-m", "2024-05-17T10:30"}, "P/beach.jpg\n"},
      {{"P", "--any", "-n", "BEACH", "-m", "2024-05-17T10:30"}, all},
      {{"P", "-n", "nothing"}, "", "", 1},
  });
}

TEST_F(SearchTest, RangesEndBetweenNanoseconds) {
  constexpr std::int64_t first = 1715896800; // 2024-05-17 00:00 in summer
  constexpr std::int64_t next = first + 86400;
  constexpr std::uint32_t lastNanosecond = 999'999'999;
  tree.setModified("P/beach.jpg", first - 1, lastNanosecond);
  tree.setModified("P/a/BEACH.JPG", first);
  tree.setModified("P/a/b/scan.pdf", next - 1, lastNanosecond);
  tree.setModified("Q/beach.tif", next);
  expect({
      {{"P", "Q", "-m", "2024-05-17"}, "P/a/BEACH.JPG\nP/a/b/scan.pdf\n"},
      {{"P", "Q", "-m", "..2024-05-16"}, "P/beach.jpg\n"},
      {{"P", "Q", "-m", "2024-05-18.."}, "Q/beach.tif\n"},
      {{"P", "Q", "-m", "2024-05-17..2024-05-18T00:00:00"},
       "P/a/BEACH.JPG\nP/a/b/scan.pdf\nQ/beach.tif\n"},
  });
}

TEST_F(SearchTest, FoldersArePrintedAsTyped) {
  tree.link("link", "P");
  expect({
      {{"-n", ".tif"}, "./Q/beach.tif\n"},
      {{".", "-n", ".tif"}, "./Q/beach.tif\n"},
      {{"./", "-n", ".tif"}, "./Q/beach.tif\n"},
      {{"Q"}, "Q/beach.tif\n"},
      {{"Q/"}, "Q/beach.tif\n"},
      {{"Q//"}, "Q//beach.tif\n"},
      {{"P/../Q"}, "P/../Q/beach.tif\n"},
      {{tree.path("Q")}, tree.path("Q/beach.tif\n")},
      {{"link", "-n", "scan"}, "link/a/b/scan.pdf\n"},
      {{"P/.hidden"}, "P/.hidden/beach.jpg\n"},
  });
}

TEST_F(SearchTest, AFileIsPrintedOnce) {
  tree.link("link", "P/a");
  tree.file("P/a/b/x.y/deep.jpg");
  const std::string all = "P/a/BEACH.JPG\nP/a/b/scan.pdf\nP/a/b/x.y/deep.jpg\nP/beach.jpg\n";
  expect({
      {{"P", "P"}, all},
      {{"P", "P/a", "./P/a/b", "link", "P/a/b/x.y"}, all},
      {{"P/a/b", "P"}, all},
      {{"--no-subfolders", "P/a", "P", "link"}, "P/a/BEACH.JPG\nP/beach.jpg\n"},
      {{"P", "P/.hidden", "--count"}, "5\n"},
  });
}

TEST_F(SearchTest, FoldersThatCannotBeRead) {
  tree.link("loop", "loop");
  expect({
      {{"nowhere", "Q", "", "P/beach.jpg"},
       "Q/beach.tif\n",
       "ssfind: nowhere: No such file or directory\n"
       "ssfind: '': No such file or directory\n"
       "ssfind: P/beach.jpg: Not a directory\n",
       2},
      {{"two\nlines"}, "", "ssfind: two\\nlines: No such file or directory\n", 2},
      {{"loop"}, "", "ssfind: loop: Too many levels of symbolic links\n", 2},
      {{"-q", "nowhere", "Q"}, "", "ssfind: nowhere: No such file or directory\n", 0},
  });
  for (const mode_t mode : {0000, 0300, 0400}) {
    tree.setMode("P/a", mode);
    const Outcome locked = Command(tree.path(), {"P/a"}).prepare(dropPrivileges).run();
    if (locked.code == Command::notPrepared)
      GTEST_SKIP() << "namespaces are not allowed here";
    EXPECT_EQ(locked, (Outcome{2, "", "ssfind: P/a: Permission denied\n"})) << mode;
  }
}

TEST_F(SearchTest, OtherFileSystemsBelow) {
  tree.folder("P/a/usb");
  tree.folder("P/.hidden/usb");
  const auto mountThem = [] {
    const auto mountOn = [](const char *path) {
      return mount("none", path, "tmpfs", 0, nullptr) == 0;
    };
    return enterOwnMounts() && mountOn("P/.hidden/usb") && mountOn("P/a/usb") &&
           mkdir("P/a/usb/in", 0755) == 0 && mountOn("P/a/usb/in") &&
           mknod("P/a/usb/in/far.jpg", S_IFREG | 0644, 0) == 0;
  };
  const std::vector<Row> rows = {
      {{"./P", "-n", "far"},
       "",
       "ssfind: ./P/a/usb: another file system, not searched (use --mounts)\n",
       1},
      {{"./P", "-n", "far", "--mounts"}, "./P/a/usb/in/far.jpg\n"},
      {{"P", "P/a/usb/in", "-n", "far", "--mounts"}, "P/a/usb/in/far.jpg\n"},
      {{"P", "P/a/usb/in", "-q", "-n", "far"}, ""},
      {{"P", "--no-subfolders"}, "P/beach.jpg\n"},
  };
  for (const Row &row : rows) {
    const Outcome outcome = Command(tree.path(), row.arguments).prepare(mountThem).run();
    if (outcome.code == Command::notPrepared)
      GTEST_SKIP() << "mounting is not allowed here";
    EXPECT_EQ(outcome, (Outcome{row.code, row.out, row.err}));
  }
}

TEST_F(SearchTest, Lists) {
  tree.link("link", "P/a");
  const struct {
    const char *name;
    std::vector<std::string> arguments;
    const char *list;
    const char *out;
  } rows[] = {
      {"as written", {}, "P/beach.jpg\n./Q/beach.tif", "./Q/beach.tif\nP/beach.jpg\n"},
      {"once", {}, "link/BEACH.JPG\nP/a/BEACH.JPG\n./P/a/BEACH.JPG\n", "link/BEACH.JPG\n"},
      {"dead",
       {},
       "\ngone.jpg\nno/x.jpg\nP/beach.jpg/\nP/beach.jpg/x.jpg\nQ/beach.tif\n",
       "Q/beach.tif\n"},
      {"other kinds", {}, "P/a/b/note.txt\nP/.hidden/beach.jpg\n", "P/.hidden/beach.jpg\n"},
      {"conditions", {"-n", "beach"}, "P/a/b/scan.pdf\nQ/beach.tif\n", "Q/beach.tif\n"},
      {"folders", {}, "P/a/\nP/a/b\nP/a/b/scan.pdf\n", "P/a/BEACH.JPG\nP/a/b/scan.pdf\n"},
      {"flat", {"--no-subfolders"}, "P\nP/a\n", "P/a/BEACH.JPG\nP/beach.jpg\n"},
      {"with folders",
       {"Q", "P/a/b"},
       "P/a/b/scan.pdf\nP/beach.jpg\n",
       "P/a/b/scan.pdf\nP/beach.jpg\nQ/beach.tif\n"},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.name);
    std::vector<std::string> arguments = row.arguments;
    arguments.insert(arguments.end(), {"--files-from", "-"});
    EXPECT_EQ(sorted(run(arguments, row.list)), (Outcome{0, row.out}));
    tree.file("list", row.list);
    arguments.back() = "list";
    EXPECT_EQ(sorted(run(arguments)), (Outcome{0, row.out}));
  }
  tree.file("other\nline.jpg");
  EXPECT_EQ(run({"--files-from", "-", "-0"}, std::string("other\nline.jpg\0Q\0", 17)),
            (Outcome{0, std::string("other\nline.jpg\0Q/beach.tif\0", 27)}));
  EXPECT_EQ(run({"--files-from", "-"}, ""), (Outcome{1}));
}

TEST_F(SearchTest, ListsThatCannotBeRead) {
  tree.file("zeros", std::string("P\0Q\0", 4));
  expect({
      {{"--files-from", "nowhere", "Q"},
       "Q/beach.tif\n",
       "ssfind: nowhere: No such file or directory\n",
       2},
      {{"--files-from", "P"}, "", "ssfind: P: Is a directory\n", 2},
      {{"--files-from", "zeros"},
       "",
       "ssfind: zeros: paths are separated by NUL, which needs -0\n",
       2},
  });
}

} // namespace
