#include "testing/PhotoFile.h"
#include "tests/ssfind/command/Command.h"

#include <filesystem>
#include <poll.h>
#include <pty.h>

namespace searchsystem {

namespace {

/// A pipe, or a terminal that passes on what is written to it as it is.
struct Pipe {
  explicit Pipe(bool isTerminal = false) {
    termios raw{};
    cfmakeraw(&raw);
    EXPECT_EQ(isTerminal ? openpty(ends, ends + 1, nullptr, &raw, nullptr) : pipe2(ends, O_CLOEXEC),
              0);
  }
  ~Pipe() { closeEnd(reader), closeEnd(writer); }
  /// Reads that many bytes, or all until the last writer closes its end.
  [[nodiscard]] std::string read(std::size_t size) const {
    std::string text;
    char byte = 0;
    while (text.size() < size && ::read(ends[0], &byte, 1) == 1)
      text += byte;
    return text;
  }
  static void closeEnd(int &end) { close(std::exchange(end, -1)); }

  int ends[2] = {-1, -1};
  int &reader = ends[0];
  int &writer = ends[1];
};

class OutputTest : public CommandTest {
protected:
  /// Paths of more bytes together than a pipe and the command's own buffer hold.
  void makeManyFiles() {
    for (int i = 0; i < fileCount; ++i)
      tree.file(std::to_string(i) + std::string(230, 'x') + ".jpg");
  }
  static constexpr int fileCount = 1500;
};

TEST_F(OutputTest, FormatsOrderAndLimit) {
  tree.file("old.jpg", "12345");
  tree.file("new/b.pdf", std::string(1234567, 'x'));
  tree.link("new/a.tif", "../old.jpg");
  tree.setModified("old.jpg", 1704110400, 5999);
  tree.setModified("new/b.pdf", 1715934600, 123456789);
  tree.setModified("new/a.tif", 1715934600, 123456789);
  const char *const sameTime = R"("modified":"2024-05-17T10:30:00.123456+02:00"})";
  expect({
      {{"--json", "--sort", "modified"},
       std::string(R"({"path":"./new/a.tif","size":10,)") + sameTime + '\n' +
           R"({"path":"./new/b.pdf","size":1234567,)" + sameTime + '\n' +
           R"({"path":"./old.jpg","size":5,"modified":"2024-01-01T13:00:00.000005+01:00"})" + '\n'},
      {{"-l", "-n", "b"}, "     1234567  2024-05-17 10:30:00  ./new/b.pdf\n"},
      {{"--count"}, "3\n"},
      {{"--count", "-n", "x"}, "0\n", "", 1},
      {{"--count", "--limit", "2"}, "2\n"},
      {{"-q"}, ""},
      {{"-q", "-n", "x"}, "", "", 1},
      {{"--sort", "modified", "--limit", "2"}, "./new/a.tif\n./new/b.pdf\n"},
  });
  EXPECT_EQ(run({"--format", "{name}\t{size} {{{modified}}} {taken}", "--sort", "size"}).out,
            "b.pdf\t1234567 {2024-05-17 10:30:00} -\na.tif\t10 {2024-05-17 10:30:00} -\n"
            "old.jpg\t5 {2024-01-01 13:00:00} -\n");
  const std::string name = "./new/a.tif\n./new/b.pdf\n./old.jpg\n";
  EXPECT_EQ(run({"--sort", "name"}).out, name);
  EXPECT_EQ(run({"--sort", "taken", "--reverse"}).out, name) << "none has a date";
  EXPECT_EQ(run({"--sort", "size", "--reverse", "--limit", "1"}).out, "./old.jpg\n");
  EXPECT_EQ(run({"--sort", "modified", "--reverse", "-0", "--format", "{path}\\0"}).out,
            std::string("./old.jpg\0\0./new/a.tif\0\0./new/b.pdf\0\0", 37));
  tree.file("new-b.jpg");
  tree.setModified("old.jpg", 4102444800);
  EXPECT_EQ(run({"--sort", "path", "nowhere", "new", "."}),
            (Outcome{2, "./new-b.jpg\n./old.jpg\nnew/a.tif\nnew/b.pdf\n",
                     "ssfind: nowhere: No such file or directory (to search for a name: ssfind -n "
                     "nowhere)\n"}));
  EXPECT_EQ(run({"--sort", "modified"}),
            (Outcome{0, "./old.jpg\n./new-b.jpg\n./new/a.tif\n./new/b.pdf\n"}));
}

TEST_F(OutputTest, ShootingDatesAndCameras) {
  const auto photo = [] { return PhotoTags::photo(); };
  const auto shotWith = [&](const char *maker, const char *model) {
    return photo().taken("2024:01:02 03:04:05").text(0, 0x010F, maker).text(0, 0x0110, model);
  };
  tree.file("a.jpg", jpegFile({shotWith("Canon Inc.", "Canon \u00D6").exifSegment()}));
  tree.file("b.tif", photo().text(1, 0x9004, "2024:07:31 23:59:59").tiff());
  tree.file("c.jpg", jpegFile({photo().taken("2024:02:30 00:00:00").exifSegment()}));
  tree.file("d.tif", photo().taken("2023:12:31 23:59:59").tiff());
  tree.file("e.pdf", "2024:01:02 03:04:05");
  tree.file("f.JPEG", jpegFile({shotWith("Maker", "Model of twenty-four").exifSegment()}));
  const auto shown = [this](const std::string &format) {
    std::istringstream lines(run({"-t", "2024", "-n", "e", "--any", "--sort", "path", format}).out);
    std::string dates;
    for (std::string line; std::getline(lines, line);)
      dates += format == "--json" ? line.substr(line.find(",\"taken\"")) : line.substr(33);
    return dates;
  };
  for (const char *const name : {"a.jpg", "b.tif", "c.jpg", "d.tif", "e.pdf", "f.JPEG"})
    tree.setModified(name, 0);
  EXPECT_EQ(shown("--json"),
            R"(,"taken":"2024-01-02T03:04:05.000000+01:00","maker":"Canon Inc.","model":"Canon Ö"})"
            R"(,"taken":"2024-07-31T23:59:59.000000+02:00","maker":null,"model":null})"
            R"(,"taken":null,"maker":null,"model":null})"
            R"(,"taken":"2024-01-02T03:04:05.000000+01:00","maker":"Maker",)"
            R"("model":"Model of twenty-four"})");
  EXPECT_EQ(shown("--long"), "  2024-01-02 03:04:05  Canon Ö                   ./a.jpg"
                             "  2024-07-31 23:59:59  -                         ./b.tif"
                             "                    -  -                         ./e.pdf"
                             "  2024-01-02 03:04:05  Maker Model of twenty-four  ./f.JPEG");
  EXPECT_EQ(run({"--sort", "taken", "--format", "{name} {taken}", "-n", ".j"}).out,
            "a.jpg 2024-01-02 03:04:05\nf.JPEG 2024-01-02 03:04:05\nc.jpg -\n");
  EXPECT_EQ(run({"-t", "2024", "--sort", "path", "--json", "--plain"}).out.find("maker"),
            std::string::npos);
  EXPECT_EQ(run({"--json", "-n", "e"}).out.find("taken"), std::string::npos);
}

TEST_F(OutputTest, NamesOfAnyBytes) {
  tree.file("other.jpg");
  tree.file("a\n\x1b[31m\xFF\xE2\x80\xAE\\.jpg");
  EXPECT_EQ(run({"-n", "m\xFF"}), (Outcome{0, "./a\n\x1b[31m\xFF\xE2\x80\xAE\\.jpg\n"}));
  const std::string json = run({"--json", "-n", "m\xFF"}).out;
  EXPECT_EQ(json.substr(0, json.find(",\"size\"")),
            R"({"path":{"bytes":"Li9hChtbMzFt/+KArlwuanBn"})");
}

TEST_F(OutputTest, TerminalsAndColors) {
  tree.file("new/a\n\x1b\xFF.jpg");
  const std::string plain = "new/a\\n\\x1b\\xff.jpg\n";
  const std::string colored = "\x1b[36mnew/\x1b[0ma\\n\\x1b\\xff.jpg\n";
  const struct {
    std::string color, setting, shown;
  } rows[] = {{"auto", "TERM=xterm", colored}, {"auto", "TERM=dumb", plain},
              {"auto", "NO_COLOR=1", plain},   {"auto", "NO_COLOR=", colored},
              {"never", "TERM=xterm", plain},  {"always", "NO_COLOR=1", colored}};
  for (auto row : rows) {
    Pipe terminal(true);
    Command command(tree.path(), {"new", "--color", row.color});
    command.prepare([&row] { return putenv(row.setting.data()) == 0; });
    EXPECT_EQ(command.outputTo(terminal.writer).run(), (Outcome{0, ""}));
    Pipe::closeEnd(terminal.writer);
    EXPECT_EQ(terminal.read(std::string::npos), row.shown) << row.color << ' ' << row.setting;
  }
  EXPECT_EQ(run({"new", "--color", "always"}),
            (Outcome{0, "\x1b[36mnew/\x1b[0ma\n\x1b\xFF.jpg\n"}));
}

TEST_F(OutputTest, ThatNobodyReadsOrThatCannotBeWritten) {
  makeManyFiles();
  Pipe output;
  Pipe::closeEnd(output.reader);
  EXPECT_EQ(Command(tree.path(), {}).outputTo(output.writer).run(), (Outcome{0, ""}));

  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  for (const char *const option : {"--any", "--count", "--help"})
    EXPECT_EQ(Command(tree.path(), {option}).outputTo(full).run(),
              (Outcome{2, "", "ssfind: standard output: No space left on device\n"}));
  close(full);
  EXPECT_EQ(Command(tree.path(), {}).outputTo(-1).run(),
            (Outcome{2, "", "ssfind: standard output: Bad file descriptor\n"}));
}

TEST_F(OutputTest, TheFirstInterruptPrintsWhatWasFoundTheSecondEndsAtOnce) {
  makeManyFiles();
  for (const bool isFirst : {true, false}) {
    Pipe output;
    Command command(tree.path(), {});
    const pid_t process = command.outputTo(output.writer).start();
    Pipe::closeEnd(output.writer);
    // Once this is here the search runs, and it cannot end before more is read.
    EXPECT_EQ(output.read(2), "./");
    kill(process, SIGTERM);
    // Signals sent at once may count as one.
    pollfd ended{output.reader, 0, 0};
    for (int i = 0; !isFirst && i < 1000 && poll(&ended, 1, 10) == 0; ++i)
      kill(process, SIGINT);
    const std::string rest = isFirst ? output.read(std::string::npos) : ".jpg\n";
    EXPECT_EQ(command.finish(), (Outcome{130, ""}));
    EXPECT_TRUE(rest.ends_with(".jpg\n"));
    EXPECT_LT(std::count(rest.begin(), rest.end(), '\n'), fileCount);
  }
}

TEST_F(OutputTest, StatusOfTheIndexAndItsRemoval) {
  const std::string index = cache.path("SearchSystem/folders-2.index");
  const Outcome none{0, "index    " + index + "\nsize     0 bytes\nfolders  0\nentries  0\n"};
  EXPECT_EQ(run({"--index-status"}), none);
  cache.file("SearchSystem/folders-2.index", "a file of another program");
  EXPECT_EQ(run({"--index-status"}),
            (Outcome{2, "", "ssfind: " + index + ": the index cannot be read at present\n"}));
  cache.file("SearchSystem/folders-1.sqlite", "of an older version");
  EXPECT_EQ(run({"--index-clear"}), (Outcome{0}));
  EXPECT_EQ(run({"--index-status"}), none);
  EXPECT_TRUE(std::filesystem::is_empty(cache.path("SearchSystem")));
  tree.file("a.jpg");
  const auto runAt = [this](const char *home, std::vector<std::string> arguments) {
    Command command(tree.path(), std::move(arguments));
    command.prepare([home] {
      return setenv("XDG_CACHE_HOME", "relative", 1) == 0 &&
             (home != nullptr ? setenv("HOME", home, 1) : unsetenv("HOME")) == 0;
    });
    return command.run();
  };
  for (const char *const home : {static_cast<const char *>(nullptr), "relative"}) {
    EXPECT_EQ(runAt(home, {"-n", "a"}), (Outcome{0, "./a.jpg\n"}));
    EXPECT_EQ(runAt(home, {"--index-clear"}), (Outcome{0}));
    EXPECT_EQ(runAt(home, {"--index-status"}),
              (Outcome{2, "",
                       "ssfind: there is no index: neither XDG_CACHE_HOME nor HOME names a folder "
                       "for it\n"}));
  }
  const std::string atHome = "index    /nowhere/.cache/SearchSystem/";
  EXPECT_TRUE(runAt("/nowhere", {"--index-status"}).out.starts_with(atHome));
}

TEST_F(OutputTest, HelpAndVersion) {
  EXPECT_NE(run({"--help"}).out.find("\n  -m, --modified RANGE "), std::string::npos);
  EXPECT_TRUE(run({"--version"}).out.starts_with("ssfind "));
  EXPECT_EQ(run({"--nonsense"}).code, 2);
}

} // namespace

} // namespace searchsystem
