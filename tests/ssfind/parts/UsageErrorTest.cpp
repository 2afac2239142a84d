#include "hosts/ssfind/OptionParser.h"
#include "hosts/ssfind/SearchPlan.h"

#include <gtest/gtest.h>

namespace searchsystem {

namespace {

using namespace ssfind;

ParsedOptions parse(std::vector<const char *> arguments) {
  arguments.insert(arguments.begin(), "ssfind");
  return parseOptions(static_cast<int>(arguments.size()), arguments.data());
}

TEST(UsageErrorTest, PointsAtTheArgument) {
  const struct {
    std::vector<const char *> arguments;
    const char *message, *command, *marks;
  } rows[] = {
      {{"a", "--naem", "x"}, "there is no option --naem", "a --naem x", "  ^^^^^^"},
      {{"\xC3\xA9\n", "--\x1b"}, R"(there is no option --\x1b)", "é\\n --\\x1b", "    ^^^^^^"},
      {{"P", "-name", "x"}, "the option is --name, with two dashes", "P -name x", "  ^^^^^"},
      {{"-iname=x"}, "the option is --name, with two dashes", "-iname=x", "^^^^^^^^"},
      {{"-m", "2024", "-x", ";", "-m", "x"},
       "--modified is given twice",
       "-m 2024 -x ; -m x",
       "^^           ^^"},
      {{"-x"}, "--exec needs a command", "-x", "^^"},
      {{"a", "-X", "cp", "{}", "{}"},
       "--exec-batch has one placeholder, behind the program",
       "a -X cp {} {}",
       "  ^^"},
      {{"-n"}, "--name needs a value", "-n", "^^"},
      {{"--limit=1x"}, "--limit is a whole number from 1", "--limit=1x", "^^^^^^^^^^"},
      {{"--sort", "date", "a"},
       "--sort is one of modified, name, path, size, taken",
       "--sort date a",
       "       ^^^^"},
      {{"--reverse"}, "--reverse requires --sort", "--reverse", "^^^^^^^^^"},
      {{"-l", "a", "--json"}, "--json excludes --long", "-l a --json", "^^   ^^^^^^"},
      {{"-tx", "a", "--taken=y"}, "--taken is given twice", "-tx a --taken=y", "^^^   ^^^^^^^^^"},
      {{"-k", "a", "-k", "", "b"},
       "--keyword: an empty text would match nothing",
       "-k a -k  b",
       "        ^"},
      {{"-g", "-n", ""}, "--name: an empty pattern would match nothing", "-g -n ", "      ^"},
      {{"--glob"}, "--glob requires --name", "--glob", "^^^^^^"},
      {{"--no-subfolders", "-d2"},
       "--no-subfolders excludes --max-depth",
       "--no-subfolders -d2",
       "^^^^^^^^^^^^^^^ ^^^"},
      {{"-k", "", "a"}, "--keyword: an empty text would match nothing", "-k  a", "   ^"},
      {{"--any", "-n", ""},
       "--name: with --any an empty text would match nothing",
       "--any -n ",
       "         ^"},
      {{"-kx", "--in", "pdf,"}, "--in is pdf, exif or pdf,exif", "-kx --in pdf,", "         ^^^^"},
      {{"--in", "pdf"}, "--in requires --keyword", "--in pdf", "^^^^"},
      {{"--unread", "--plain"},
       "--plain excludes --unread",
       "--unread --plain",
       "^^^^^^^^ ^^^^^^^"},
      {{"a", "--index-clear"}, "--index-clear stands alone", "a --index-clear", "  ^^^^^^^^^^^^^"},
      {{"a", "b", "c", "d", "e", "-z", "f", "g", "h", "i"},
       "there is no option -z",
       "… c d e -z f g h …",
       "        ^^"},
  };
  for (const auto &row : rows) {
    const auto parsed = parse(row.arguments);
    ASSERT_TRUE(std::holds_alternative<UsageError>(parsed)) << row.command;
    EXPECT_EQ(std::get<UsageError>(parsed).text, std::string("ssfind: ") + row.message +
                                                     "\n  ssfind " + row.command + "\n         " +
                                                     row.marks + "\nTry 'ssfind --help'.\n");
  }
}

TEST(UsageErrorTest, MessagesOfOthersAreEscaped) {
  const auto parsed = parse({"--regex", "-n", "a(?\x1b\xFF"});
  EXPECT_EQ(std::get<UsageError>(parsed).text,
            "ssfind: --name: invalid perl operator: (?\\x1b\n  a(?\\x1b\\xff\n   ^\nTry 'ssfind "
            "--help'.\n");
}

TEST(UsageErrorTest, UnusualArgumentsThatAreRight) {
  const auto options = [](std::vector<const char *> arguments) {
    return std::get<Options>(parse(std::move(arguments)));
  };
  EXPECT_EQ(options({}).folders, std::vector<std::string>{"."});
  EXPECT_EQ(options({"--any=", "-n="}).folders, std::vector<std::string>{"."});
  EXPECT_EQ(options({"[a,b]", "-", "--", "-x", "--", "--name="}).folders,
            (std::vector<std::string>{"[a,b]", "-", "-x", "--", "--name="}));
  EXPECT_TRUE(options({"--files-from", "-"}).folders.empty());
  EXPECT_EQ(options({"-sn[x,y]", "a"}).conditions.name, "[x,y]");
  EXPECT_EQ(options({"-sn", "--name=", "a"}).conditions.name, "--name=");
  EXPECT_EQ(options({"--color", "always", "--color=never"}).output.coloring, Coloring::Never);
  EXPECT_EQ(options({"-l0"}).output.separator, '\0');
  StandardError errors(false);
  EXPECT_TRUE(planSearch(options({"/proc", "/"}), errors).hasOverlap);
}

} // namespace

} // namespace searchsystem
