#include "tests/ssfind/PseudoTerminal.h"
#include "tests/ssfind/command/Command.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sched.h>
#include <unistd.h>
#include <utility>

namespace {

struct Pipe {
  Pipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
      std::abort();
    reader = ends[0];
    writer = ends[1];
  }
  ~Pipe() {
    close(reader);
    close(writer);
  }

  /// Reads that many bytes, or all until the last writer closes its end.
  std::string read(std::size_t size) const {
    std::string text;
    char byte = 0;
    while (text.size() < size && ::read(reader, &byte, 1) == 1)
      text += byte;
    return text;
  }
  static void closeEnd(int &end) { close(std::exchange(end, -1)); }

  int reader;
  int writer;
};

/// What is printed, when, and how it ends.
class OutputTest : public CommandTest {
protected:
  /// Three files of known size and date.
  void makeDatedFiles() {
    tree.file("old.jpg", "12345");
    tree.file("new/b.pdf", std::string(1234567, 'x'));
    tree.link("new/a.tif", "../old.jpg");
    tree.setModified("old.jpg", 1704110400, 5999);
    tree.setModified("new/b.pdf", 1715934600, 123456789);
    tree.setModified("new/a.tif", 1715934600, 123456789);
  }

  /// Paths of more bytes together than a pipe and the command's own buffer hold.
  void makeManyFiles() {
    for (int i = 0; i < fileCount; ++i)
      tree.file(std::to_string(i) + std::string(230, 'x') + ".jpg");
  }
  static constexpr int fileCount = 1500;
};

TEST_F(OutputTest, Formats) {
  makeDatedFiles();
  EXPECT_EQ(run({"--json", "--sort", "modified"}).out,
            R"({"path":"./new/a.tif","size":10,"modified":"2024-05-17T10:30:00.123456+02:00"})"
            "\n"
            R"({"path":"./new/b.pdf","size":1234567,"modified":"2024-05-17T10:30:00.123456+02:00"})"
            "\n"
            R"({"path":"./old.jpg","size":5,"modified":"2024-01-01T13:00:00.000005+01:00"})"
            "\n");
  EXPECT_EQ(run({"-l", "--sort", "modified"}).out,
            "          10  2024-05-17 10:30:00  ./new/a.tif\n"
            "     1234567  2024-05-17 10:30:00  ./new/b.pdf\n"
            "           5  2024-01-01 13:00:00  ./old.jpg\n");
  EXPECT_EQ(run({"--count"}), (Outcome{0, "3\n"}));
  EXPECT_EQ(run({"--count", "-n", "x"}), (Outcome{1, "0\n"}));
  EXPECT_EQ(run({"-q"}), (Outcome{0, ""}));
  EXPECT_EQ(run({"-q", "-n", "x"}), (Outcome{1, ""}));
  EXPECT_EQ(run({"--print0", "-n", "old"}), (Outcome{0, std::string("./old.jpg\0", 10)}));
}

TEST_F(OutputTest, OrderAndLimit) {
  makeDatedFiles();
  tree.file("new-b.jpg");
  tree.setModified("old.jpg", 4102444800);
  EXPECT_EQ(run({"--sort", "path", "nowhere", "new", "."}),
            (Outcome{2, "./new-b.jpg\n./old.jpg\nnew/a.tif\nnew/b.pdf\n",
                     "ssfind: nowhere: No such file or directory\n"}));
  EXPECT_EQ(run({"--sort", "modified"}),
            (Outcome{0, "./old.jpg\n./new-b.jpg\n./new/a.tif\n./new/b.pdf\n"}));
  EXPECT_EQ(run({"--sort", "modified", "--limit", "2"}), (Outcome{0, "./old.jpg\n./new-b.jpg\n"}));
  EXPECT_EQ(run({"--limit", "2", "--count"}), (Outcome{0, "2\n"}));
  const Outcome limited = run({"new", ".", "--limit", "3"});
  EXPECT_EQ(std::count(limited.out.begin(), limited.out.end(), '\n'), 3) << limited;
}

TEST_F(OutputTest, NamesOfAnyBytes) {
  tree.file("a\n\x1b[31m\xFF\xE2\x80\xAE\\.jpg");
  EXPECT_EQ(run({}), (Outcome{0, "./a\n\x1b[31m\xFF\xE2\x80\xAE\\.jpg\n"}));
  EXPECT_EQ(run({"-n", "m\xFF"}), (Outcome{0, "./a\n\x1b[31m\xFF\xE2\x80\xAE\\.jpg\n"}));
  const std::string json = run({"--json"}).out;
  EXPECT_EQ(json.substr(0, json.find(",\"size\"")),
            R"({"path":{"bytes":"Li9hChtbMzFt/+KArlwuanBn"})");
}

TEST_F(OutputTest, TerminalsAndColors) {
  tree.file("new/a\n\x1b\xFF.jpg");
  const std::string plain = "new/a\\n\\x1b\\xff.jpg\n";
  const std::string colored = "\x1b[36mnew/\x1b[0ma\\n\\x1b\\xff.jpg\n";
  const struct {
    std::vector<std::string> arguments;
    const char *setting;
    const char *value;
    std::string shown;
  } rows[] = {
      {{"new"}, "TERM", "xterm", colored},
      {{"new"}, "TERM", "dumb", plain},
      {{"new"}, "NO_COLOR", "1", plain},
      {{"new"}, "NO_COLOR", "", colored},
      {{"new", "--color", "never"}, "TERM", "xterm", plain},
      {{"new", "--color", "always"}, "NO_COLOR", "1", colored},
  };
  for (const auto &row : rows) {
    PseudoTerminal terminal;
    const Outcome outcome = Command(tree.path(), row.arguments)
                                .environment(row.setting, row.value)
                                .outputTo(terminal.inside())
                                .run();
    EXPECT_EQ(outcome, (Outcome{0, ""}));
    EXPECT_EQ(terminal.readAll(), row.shown) << outcome << row.setting << '=' << row.value;
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
  for (const std::vector<std::string> &arguments :
       {std::vector<std::string>{}, {"--count"}, {"--help"}})
    EXPECT_EQ(Command(tree.path(), arguments).outputTo(full).run(),
              (Outcome{2, "", "ssfind: standard output: No space left on device\n"}));
  close(full);
  EXPECT_EQ(Command(tree.path(), {}).outputTo(-1).run(),
            (Outcome{2, "", "ssfind: standard output: Bad file descriptor\n"}));
}

TEST_F(OutputTest, AnInterruptPrintsWhatWasFound) {
  makeManyFiles();
  for (const int signal : {SIGINT, SIGTERM}) {
    Pipe output;
    Command command(tree.path(), {});
    const pid_t process = command.outputTo(output.writer).start();
    Pipe::closeEnd(output.writer);
    // Once this is here the search runs, and it cannot end before more is read.
    ASSERT_EQ(output.read(2), "./");
    kill(process, signal);
    const std::string rest = output.read(std::string::npos);
    EXPECT_EQ(command.finish(), (Outcome{130, ""}));
    EXPECT_TRUE(rest.ends_with(".jpg\n"));
    EXPECT_LT(std::count(rest.begin(), rest.end(), '\n'), fileCount);
  }
}

TEST_F(OutputTest, ASecondInterruptEndsItAtOnce) {
  makeManyFiles();
  Pipe output;
  Command command(tree.path(), {});
  const pid_t process = command.outputTo(output.writer).start();
  Pipe::closeEnd(output.writer);
  ASSERT_EQ(output.read(2), "./");
  // Nobody reads, so that it could not end by itself. Two signals sent at once may count as one.
  while (command.isRunning()) {
    kill(process, SIGINT);
    sched_yield();
  }
  EXPECT_EQ(command.finish().code, 130);
}

TEST_F(OutputTest, AnInterruptEndsTheWaitForAList) {
  Pipe input;
  Command command(tree.path(), {"--files-from", "-"});
  const pid_t process = command.inputFrom(input.reader).start();
  Pipe::closeEnd(input.reader);
  // More than a pipe holds: when all is written, the command is reading.
  const std::string list(200'000, '\n');
  ASSERT_EQ(write(input.writer, list.data(), list.size()), 200'000);
  kill(process, SIGINT);
  EXPECT_EQ(command.finish(), (Outcome{130, ""}));
}

TEST_F(OutputTest, HelpAndVersion) {
  const Outcome help = run({"--help"});
  EXPECT_EQ(help.code, 0);
  EXPECT_NE(help.out.find("\n  -m, --modified RANGE "), std::string::npos) << help;
  EXPECT_EQ(run({"-h", "--nonsense"}).out, help.out);
  EXPECT_TRUE(run({"--version"}).out.starts_with("ssfind "));
  EXPECT_EQ(run({"--nonsense"}),
            (Outcome{2, "",
                     "ssfind: there is no option --nonsense\n  ssfind --nonsense\n"
                     "         ^^^^^^^^^^\nTry 'ssfind --help'.\n"}));
}

} // namespace
