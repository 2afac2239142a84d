#include "tests/ssfind/command/Command.h"

#include <poll.h>
#include <sys/resource.h>

namespace searchsystem {

namespace {

class ExecTest : public CommandTest {};

TEST_F(ExecTest, ForEachAndForAll) {
  tree.file("P/a b.jpg");
  tree.file("P/c.jpg");
  tree.file("d.pdf");
  expect({
      {{"P", "-x", "echo", "{/.}:", "{}"}, "a b: P/a b.jpg\nc: P/c.jpg\n"},
      {{"P", "-sx", "printf", "%s|%s\\n", ";", "-n", "c"}, "P/c.jpg|\n"},
      {{"--exec", "echo", "x", "-n", ";", "P", "-nc", "-j1"}, "x -n P/c.jpg\n"},
      {{"P", "-n", "nothing", "-x", "false"}, "", "", 1},
      {{"P", "-n", "nothing", "-X", "false"}, "", "", 1},
      {{"-x", "sh", "-c", "test '{/}' != c.jpg && echo '{/}'"}, "a b.jpg\nd.pdf\n", "", 2},
      {{"-x", "sh", "-c", "test '{/}' = c.jpg || echo '{/}'"}, "a b.jpg\nd.pdf\n"},
      {{"-X", "sh", "-c", "echo $#; echo $0 >&2; exit 3"}, "2\n", "./d.pdf\n", 2},
      {{"d.pdf", "P", "-n", "c", "-x", "echo"}, "P/c.jpg\n", "ssfind: d.pdf: Not a directory\n", 2},
      {{"P", "-n", "c", "-x", "sh", "-c", "echo out; echo err >&2"}, "out\n", "err\n"},
      {{"-X", "nowhere"}, "", "ssfind: nowhere: No such file or directory\n", 2},
      {{"-x", "nowhere"}, "", "ssfind: nowhere: No such file or directory\n", 2},
  });
  EXPECT_EQ(run({"--sort", "path", "-X", "echo"}), (Outcome{0, "./P/a b.jpg ./P/c.jpg ./d.pdf\n"}));
  EXPECT_EQ(run({"--sort", "path", "-j1", "--limit", "2", "-x", "echo", "{/}"}),
            (Outcome{0, "a b.jpg\nc.jpg\n"}));
  EXPECT_EQ(run({"-n", "d", "-j1", "-x", "cat", "-", ";"}, "input").out, "input");
  EXPECT_EQ(run({"-n", "d", "-j2", "-x", "cat", "-", ";"}, "input").out, "");
}

TEST_F(ExecTest, BatchesFitIntoTheSystemsLimit) {
  // Some 3.5 MB of names, and a limit of 128 KiB at least; each batch prints its count.
  for (int i = 0; i < 700; ++i)
    tree.file(std::to_string(i) + std::string(200, 'x') + "/" + std::string(230, 'y') + ".jpg");
  Command command(tree.path(), {"-X", "sh", "-c", "echo $#", "sh"});
  command.prepare([] {
    const rlimit small{1 << 19, 1 << 19};
    return setrlimit(RLIMIT_STACK, &small) == 0;
  });
  const Outcome outcome = command.run();
  EXPECT_EQ(outcome.code, 0) << outcome.err;
  std::istringstream counts(outcome.out);
  int sum = 0, batches = 0;
  for (int count = 0; counts >> count; ++batches)
    sum += count;
  EXPECT_EQ(sum, 700);
  EXPECT_GT(batches, 1);
}

/// An interrupt, and a reader who leaves, end the commands with all that they have started, and so
/// close the pipe that these hold.
TEST_F(ExecTest, NoCommandIsLeftBehind) {
  tree.file("a.jpg");
  tree.file("b.jpg");
  for (const char *const how : {"interrupt", "two interrupts", "closed pipe"})
    for (const char *const jobs : {"-j2", "-j1"}) {
      SCOPED_TRACE(std::string(how) + ' ' + jobs);
      int alive[2], output[2];
      ASSERT_EQ(pipe(alive) | pipe2(output, O_CLOEXEC), 0);
      const std::string ignoring = how[0] == 't' ? "trap '' TERM; " : "";
      Command command(tree.path(),
                      {jobs, "-x", "sh", "-c",
                       ignoring + "echo >&" + std::to_string(alive[1]) + "; sleep 39; exit 0"});
      command.outputTo(output[1]);
      const pid_t process = command.start();
      close(alive[1]), close(output[1]);
      char byte = 0;
      ASSERT_EQ(read(alive[0], &byte, 1), 1);
      if (how[0] == 'c')
        close(std::exchange(output[0], -1));
      pollfd ended{alive[0], 0, 0};
      for (int i = 0; how[0] != 'c' && i < 1000 && poll(&ended, 1, 20) == 0; ++i)
        if (i == 0 || how[0] == 't')
          kill(process, SIGTERM);
      while (read(alive[0], &byte, 1) == 1) {
      }
      EXPECT_EQ(command.finish().code, how[0] == 'c' ? 0 : 130);
      close(alive[0]), close(output[0]);
    }
}

} // namespace

} // namespace searchsystem
