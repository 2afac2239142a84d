#include "tests/ssfind/command/Command.h"

#include <sched.h>
#include <sys/mount.h>

namespace searchsystem {

namespace {

constexpr const char *nowhere = "ssfind: nowhere: No such file or directory (to search for a name: "
                                "ssfind -n nowhere)\n";

class SearchTest : public CommandTest {
protected:
  SearchTest() {
    for (const char *path : {"P/beach.jpg", "P/a/BEACH.JPG", "P/a/b/scan.pdf", "P/a/b/note.txt",
                             "P/.hidden/beach.jpg", "Q/beach.tif"})
      tree.file(path);
  }
};

TEST_F(SearchTest, Conditions) {
  tree.setModified("P/a/b/scan.pdf", 1715934600);
  tree.setModified("P/beach.jpg", 1715934600);
  const std::string all = "P/a/BEACH.JPG\nP/a/b/scan.pdf\nP/beach.jpg\n";
  expect({
      {{"P"}, all},
      {{"P", "-n", "Beach"}, "P/a/BEACH.JPG\nP/beach.jpg\n"},
      {{"P", "-s", "-n", "beach"}, "P/beach.jpg\n"},
      {{"P", "--no-subfolders"}, "P/beach.jpg\n"},
      {{"P", "-n", "beach", "-m", "2024-05-17T10:30"}, "P/beach.jpg\n"},
      {{"P", "--any", "-n", "BEACH", "-m", "2024-05-17T10:30"}, all},
      {{"P", "-n", ""}, all},
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
  });
}

TEST_F(SearchTest, FoldersArePrintedAsTyped) {
  tree.link("link", "P");
  expect({
      {{"-n", ".tif"}, "./Q/beach.tif\n"},
      {{"Q/"}, "Q/beach.tif\n"},
      {{"Q//"}, "Q//beach.tif\n"},
      {{tree.path("Q")}, tree.path("Q/beach.tif\n")},
      {{"link", "-n", "scan"}, "link/a/b/scan.pdf\n"},
  });
}

TEST_F(SearchTest, AFileIsPrintedOnce) {
  tree.link("link", "P/a");
  tree.file("P/a/b/x.y/deep.jpg");
  const std::string all = "P/a/BEACH.JPG\nP/a/b/scan.pdf\nP/a/b/x.y/deep.jpg\nP/beach.jpg\n";
  expect({
      {{"P", "P/a", "./P/a/b", "link", "P/a/b/x.y"}, all},
      {{"--no-subfolders", "P/a", "P", "link"}, "P/a/BEACH.JPG\nP/beach.jpg\n"},
      {{"P", "P/.hidden", "--count"}, "5\n"},
  });
}

TEST_F(SearchTest, FoldersThatCannotBeReadOrAreMounted) {
  expect({
      {{"nowhere", "Q", "", "P/beach.jpg"},
       "Q/beach.tif\n",
       std::string(nowhere) + "ssfind: '': No such file or directory\n"
                              "ssfind: P/beach.jpg: Not a directory\n",
       2},
      {{"-q", "nowhere", "Q"}, "", nowhere, 0},
  });
  // Permissions bind root too in a user namespace that has no map.
  const auto dropPrivileges = [] { return unshare(CLONE_NEWUSER) == 0; };
  tree.setMode("P/a", 0300);
  const Outcome locked = Command(tree.path(), {"P/a"}).prepare(dropPrivileges).run();
  const auto mountDisk = [&, disk = tree.folder("Q/disk")] {
    return unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 &&
           mount(tree.path("P/a/b").c_str(), disk.c_str(), nullptr, MS_BIND, nullptr) == 0;
  };
  const auto find = [&](const std::string &option) {
    return Command(tree.path(), {"Q", "-n", "scan", option}).prepare(mountDisk).run();
  };
  const Outcome without = find("--any");
  if (locked.code == Command::notPrepared || without.code == Command::notPrepared)
    GTEST_SKIP() << "namespaces are not allowed here";
  EXPECT_EQ(locked, (Outcome{2, "", "ssfind: P/a: Permission denied\n"}));
  const char *const skipped = "ssfind: Q/disk: another file system, not searched (use --mounts)\n";
  EXPECT_EQ(without, (Outcome{1, "", skipped}));
  EXPECT_EQ(find("--mounts"), (Outcome{0, "Q/disk/scan.pdf\n"}));
}

TEST_F(SearchTest, Hints) {
  const std::string missing = ": No such file or directory";
  const std::string star = "ssfind: a * in --name stands for itself; with --glob it is any text\n";
  tree.file("P/a*b.jpg");
  expect({
      {{"my beach"},
       "",
       "ssfind: my beach" + missing + " (to search for a name: ssfind -n 'my beach')\n",
       2},
      {{"*.tif"},
       "",
       "ssfind: *.tif" + missing + " (to search for a name: ssfind -g -n '*.tif')\n",
       2},
      {{"b/c"}, "", "ssfind: b/c" + missing + '\n', 2},
      {{"-n", "x", "b"}, "", "ssfind: b" + missing + '\n', 2},
      {{"-n", "*.jpg"}, "", star, 1},
      {{"-n", "a*"}, "./P/a*b.jpg\n"},
      {{"-q", "-n", "*.jpg"}, "", "", 1},
      {{"-g", "-n", "*x"}, "", "", 1},
      {{"-k", "*", "-e", "tif", "Q", "-n", "x"},
       "",
       "ssfind: a * in --keyword stands for itself\n",
       1},
  });
}

TEST_F(SearchTest, Lists) {
  tree.link("link", "P/a");
  tree.file("R\r/c.jpg");
  const auto row = [](const char *list, const char *out, std::vector<std::string> others = {}) {
    others.insert(others.end(), {"--files-from", "-"});
    return Row{others, out, "", *out != '\0' ? 0 : 1, list};
  };
  expect({
      row("", ""),
      row("P/beach.jpg\n./Q/beach.tif", "./Q/beach.tif\nP/beach.jpg\n"),
      row("link/BEACH.JPG\nP/a/BEACH.JPG\n./P/a/BEACH.JPG\n", "link/BEACH.JPG\n"),
      row("\ngone.jpg\nP/beach.jpg/\nP/beach.jpg/x\nQ/beach.tif\n", "Q/beach.tif\n"),
      row("\r\nP/beach.jpg\r\nR\r\nQ\r\n", "P/beach.jpg\nQ/beach.tif\nR\r/c.jpg\n"),
      row("P/a/b/scan.pdf\nQ/beach.tif\n", "Q/beach.tif\n", {"-n", "beach"}),
      row("P/a/\nP/a/b\nP/a/b/scan.pdf\n", "P/a/BEACH.JPG\nP/a/b/scan.pdf\n"),
      row("P\nP/a\n", "P/a/BEACH.JPG\nP/beach.jpg\n", {"--no-subfolders"}),
      row("P/a/b/scan.pdf\nQ/beach.tif", "P/a/b/scan.pdf\nQ/beach.tif\n", {"P/a/b"}),
  });
  tree.file("other\nline.jpg");
  EXPECT_EQ(run({"--files-from", "-", "-0"}, std::string("other\nline.jpg\0Q\0", 17)),
            (Outcome{0, std::string("other\nline.jpg\0Q/beach.tif\0", 27)}));
  Command closed(tree.path(), {"--files-from", "-"});
  closed.prepare([] { return close(STDIN_FILENO) == 0; });
  EXPECT_EQ(closed.run(), (Outcome{2, "", "ssfind: standard input: Bad file descriptor\n"}));
  tree.file("zeros", std::string("P\0Q\0", 4));
  const char *const zeros = "ssfind: zeros: paths are separated by NUL, which needs -0\n";
  expect({{{"--files-from", "nowhere", "Q"},
           "Q/beach.tif\n",
           "ssfind: nowhere: No such file or directory\n",
           2},
          {{"--files-from", "P"}, "", "ssfind: P: Is a directory\n", 2},
          {{"--files-from", "zeros"}, "", zeros, 2}});
}

} // namespace

} // namespace searchsystem
