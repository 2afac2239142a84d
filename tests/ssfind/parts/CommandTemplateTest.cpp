#include "hosts/ssfind/CommandTemplate.h"

#include <gtest/gtest.h>

namespace searchsystem {

namespace {

using namespace ssfind;

using Words = std::vector<std::string>;

Words made(const Words &words, const Words &paths, bool isBatch) {
  const auto parsed = CommandTemplate::parse(words, isBatch);
  if (const auto *message = std::get_if<std::string>(&parsed))
    return {"wrong: " + *message};
  return std::get<CommandTemplate>(parsed).argumentsFor(paths);
}

TEST(CommandTemplateTest, Placeholders) {
  const struct {
    const char *path;
    Words parts;
  } rows[] = {{"./in/a.b.jpg", {"./in/a.b.jpg", "a.b.jpg", "./in", "./in/a.b", "a.b"}},
              {"a", {"a", "a", ".", "a", "a"}},
              {"/.jpg", {"/.jpg", ".jpg", "/", "/.jpg", ".jpg"}},
              {"x.y/a", {"x.y/a", "a", "x.y", "x.y/a", "a"}},
              {"-r/a.jpg", {"./-r/a.jpg", "a.jpg", "./-r", "./-r/a", "a"}}};
  for (const auto &row : rows)
    EXPECT_EQ(made({"{}", "{/}", "{//}", "{.}", "{/.}"}, {row.path}, false), row.parts);
  EXPECT_EQ(made({"cp", "{}", "{.}-{/}{", "{x}{ }"}, {"a.b"}, false),
            (Words{"cp", "a.b", "a-a.b{", "{x}{ }"}));
}

TEST(CommandTemplateTest, Batches) {
  const Words paths{"a.x", "b.x"};
  EXPECT_EQ(made({"ls", "-l"}, paths, true), (Words{"ls", "-l", "a.x", "b.x"}));
  EXPECT_EQ(made({"mv", "{/.}y", "to"}, paths, true), (Words{"mv", "ay", "by", "to"}));
  EXPECT_EQ(made({"ls"}, {"a"}, false), (Words{"ls", "a"}));
  const Words wrong{"wrong: has one placeholder, behind the program"};
  EXPECT_EQ(made({"cp", "{}", "{.}"}, paths, true), wrong);
  EXPECT_EQ(made({"{}"}, paths, true), wrong);
  EXPECT_EQ(made({}, paths, true), (Words{"wrong: needs a command"}));
}

} // namespace

} // namespace searchsystem
