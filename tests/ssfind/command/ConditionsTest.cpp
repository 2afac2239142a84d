#include "testing/DocumentWriter.h"
#include "testing/PhotoFile.h"
#include "tests/ssfind/command/Command.h"

#include <map>
#include <tuple>

namespace searchsystem {

namespace {

/// What a file meets.
struct Met {
  bool name, modified, inPDF, inExif, taken;
};

/// With a font, without which the text shows nothing: for the plain reader and the deep one.
std::string document(bool hasKeyword) {
  DocumentWriter pdf;
  const std::string text = hasKeyword ? "by the beach" : "nothing";
  return pdf.pages({3})
      .object(3, "<< /Type /Page\n/Contents [ 4 0 R ]\n"
                 "/Resources << /Font << /F 5 0 R >> >>\n>>")
      .content(4, "BT\n/F 12 Tf" + pdf.showing({text}).substr(2))
      .object(5, "<< /Type /Font\n/Subtype /Type1\n/BaseFont /Helvetica\n>>")
      .filler(600)
      .section()
      .text;
}

PhotoTags photo(bool hasKeyword, const std::string &taken) {
  PhotoTags tags = PhotoTags::photo().comment("ASCII", hasKeyword ? "by the beach" : "nothing");
  if (!taken.empty())
    tags.taken(taken);
  return tags;
}

/// Every combination of conditions on files of every kind, with the index and without, deep and
/// plain: all files
/// are found that meet them, and each once. The parameters are --any, --no-subfolders
/// and --name.
class ConditionsTest : public CommandTest,
                       public testing::WithParamInterface<std::tuple<bool, bool, bool>> {
protected:
  ConditionsTest() {
    for (const bool name : {false, true})
      for (const bool modified : {false, true}) {
        add("pct", "beach", {name, modified, false, false, false});
        for (const bool keyword : {false, true}) {
          add("pdf", document(keyword), {name, modified, keyword, false, false});
          for (const std::string taken : {"", "2001:05:17 10:30:00", "2010:05:17 10:30:00"}) {
            const Met met{name, modified, false, keyword, taken.starts_with("2010")};
            add("jpg", jpegFile({photo(keyword, taken).exifSegment()}), met);
            add("TIF", photo(keyword, taken).tiff(), met);
          }
        }
      }
  }

  /// The file, in each of the folders.
  void add(const std::string &extension, const std::string &content, const Met &met) {
    constexpr std::int64_t in2001 = 990000000, in2010 = 1275000000;
    const std::string name =
        (met.name ? "Holiday " : "Work ") + std::to_string(files_.size()) + '.' + extension;
    for (const char *const folder : {"plain/", "plain/below/", "blank /", "blank /below/"}) {
      files_[folder + name] = met;
      tree.file(folder + name, content);
      tree.setModified(folder + name, met.modified ? in2010 : in2001);
    }
  }

  void check(const std::string &modified, const std::string &kinds, const std::string &taken) {
    const auto &[isAny, isFlat, hasName] = GetParam();
    std::vector<std::string> arguments{"plain", "blank "};
    const auto addArguments = [&](bool isGiven, const std::vector<std::string> &added) {
      if (isGiven)
        arguments.insert(arguments.end(), added.begin(), added.end());
    };
    addArguments(isAny, {"--any"});
    addArguments(isFlat, {"--no-subfolders"});
    addArguments(hasName, {"-n", "holiday"});
    addArguments(!modified.empty(), {"-m", modified});
    addArguments(!kinds.empty(), {"-k", "Beach"});
    addArguments(kinds == "pdf" || kinds == "exif", {"--in", kinds});
    addArguments(!taken.empty(), {"-t", taken});

    Outcome expected{1, ""};
    for (const auto &[path, met] : files_) {
      std::vector<bool> conditions;
      if (hasName)
        conditions.push_back(met.name);
      if (!modified.empty())
        conditions.push_back(met.modified != (modified == "..2001"));
      if (!kinds.empty())
        conditions.push_back((met.inPDF && kinds != "exif") || (met.inExif && kinds != "pdf"));
      if (!taken.empty())
        conditions.push_back(met.taken);
      const auto metCount = std::count(conditions.begin(), conditions.end(), true);
      const bool isFound =
          conditions.empty() || (isAny ? metCount > 0 : metCount == std::ssize(conditions));
      if (isFound && !(isFlat && path.find("below") != path.npos))
        expected = {0, expected.out + path + '\n'};
    }
    for (const char *const option : {"--color=auto", "--no-index", "--plain"}) {
      arguments.emplace_back(option);
      EXPECT_EQ(sorted(run(arguments)), expected) << testing::PrintToString(arguments);
      arguments.pop_back();
    }
  }

private:
  std::map<std::string, Met> files_;
};

TEST_P(ConditionsTest, GiveOneAnswerWhateverTheStrategy) {
  for (const char *const modified : {"", "2010", "2010..", "..2001"})
    for (const char *const kinds : {"", "pdf", "exif", "pdf,exif"})
      for (const char *const taken : {"", "2010"})
        check(modified, kinds, taken);
}

INSTANTIATE_TEST_SUITE_P(Combinations, ConditionsTest,
                         testing::Combine(testing::Bool(), testing::Bool(), testing::Bool()));

} // namespace

} // namespace searchsystem
