#include "pdf_reader/ContentSearch.h"
#include "pdf_reader/CPDFContents.h"
#include "platform/foundation/NSString.h"
#include "testing/TextStream.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace searchsystem {

namespace {

constexpr unsigned long macRoman = 0, macJapanese = 1;

/// The texts of contents as a parse of each for itself gives them, which is slow but plain.
class PlainContents {
public:
  enum class Answer { absent, found, failed };

  PlainContents(std::string text, const KeywordSearch &search)
      : stream_(std::move(text)), search_(search) {}

  Answer at(long start) {
    const auto known = answers_.find(start);
    if (known != answers_.end())
      return known->second;
    return answers_[start] = parse(start);
  }

  bool isFoundIn(const std::vector<long> &starts) {
    for (const long start : starts)
      if (at(start) != Answer::absent)
        return at(start) == Answer::found;
    return false;
  }

private:
  Answer parse(long start) {
    CPDFContents contents;
    stream_.Seek(start, streamSeekBegin);
    if (contents.Parse(&stream_) != 1)
      return Answer::failed;
    std::string text(static_cast<std::size_t>(contents.GetTextLength()), '\0');
    unsigned long size = text.size();
    contents.GetTextString(reinterpret_cast<unsigned char *>(text.data()), &size);
    text.resize(size);
    std::optional<bool> occurs;
    for (std::size_t i = 0; i < search_.encodingCount() && !occurs; ++i)
      occurs = search_.occursIn(text, i);
    return occurs.value_or(false) ? Answer::found : Answer::absent;
  }

  TextStream stream_;
  const KeywordSearch &search_;
  std::map<long, Answer> answers_;
};

class RandomContents {
public:
  explicit RandomContents(unsigned seed) : random_(seed) {
    static constexpr unsigned damages[] = {0, 0, 1, 5, 40};
    static constexpr unsigned blanks[] = {0, 1, 2, 3, 8, 40, 1100};
    static constexpr unsigned remarks[] = {0, 0, 3, 20};
    damage_ = damages[below(5)];
    blanks_ = blanks[below(7)];
    remarks_ = remarks[below(4)];
    lineEnd_ = below(3) == 0 ? "\r\n" : below(2) == 0 ? "\r" : "\n";
    isJapanese = below(3) == 0;
    const unsigned pages = 1 + below(below(3) == 0 ? 60 : 8);
    for (unsigned i = 0; i < pages; ++i)
      addPage();
    if (below(4) != 0)
      addLine(below(2) == 0 ? "%%EOF" : "x");
    if (below(4) == 0)
      while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.pop_back();
    if (below(3) == 0)
      endAtAnEdge();
    if (below(3) == 0)
      for (unsigned n = below(40); n > 0; --n)
        starts.push_back(below(static_cast<unsigned>(text.size())));
    std::shuffle(starts.begin(), starts.end(), random_);
  }

  unsigned below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }

  std::string text;
  std::vector<long> starts;
  bool isJapanese;

private:
  /// Ends the file within a text, where a content has the edge of a block or nearly.
  void endAtAnEdge() {
    const std::size_t last = text.rfind("Tj");
    if (last == std::string::npos)
      return;
    text.resize(std::min(text.size(), last + below(5)));
    starts.erase(
        std::remove_if(starts.begin(), starts.end(),
                       [&](long start) { return start >= static_cast<long>(text.size()); }),
        starts.end());
    if (starts.empty())
      return;
    const long start = starts[below(static_cast<unsigned>(starts.size()))];
    while ((static_cast<long>(text.size()) - start) % 1024 != 0)
      text += ' ';
    text.resize(text.size() - below(3));
    text += std::string(below(3), ' ');
    for (unsigned n = below(3); n > 0; --n)
      text += lineEnd_;
  }

  void addPage() {
    if (below(3) == 0)
      addLine(std::string(below(below(2) == 0 ? 60 : 1500), 'p'));
    starts.push_back(static_cast<long>(text.size()) + (below(8) == 0 ? below(3) : 0));
    addLine("5 0 obj");
    if (below(2) == 0)
      addLine("<< /Length 7 >>");
    addLine("stream");
    for (unsigned n = 1 + below(2); n > 0; --n) {
      addLine("BT");
      for (unsigned i = below(6); i > 0; --i) {
        static const char *const lines[] = {"72 720 Td",      "T*", "/F1 12 Tf", "x y", "ET BT x",
                                            "1 0 0 1 0 0 Tm", "",   "% c"};
        if (below(2) == 0)
          addLine(lines[below(8)]);
        addLine(shown() + (below(6) == 0 ? " " + shown() : ""));
      }
      addLine("ET");
    }
    if (below(12) == 0)
      addLine("Q");
    addLine("endstream");
    addLine("endobj");
  }

  std::string shown() {
    static const char *const roman[] = {"61",   "62", "6162", "636162",
                                        "6100", "",   "616",  "61626162"};
    static const char *const japanese[] = {"61", "62", "82A0", "82", "A0", "8540", "FCFC", "6162"};
    const bool usesJapanese = isJapanese && below(2) == 0;
    const std::string digits =
        usesJapanese ? japanese[below(below(4) == 0 ? 8 : 4)] : roman[below(8)];
    return "<" + digits + "> Tj";
  }

  void addLine(std::string line) {
    static const char *const odd[] = {"obj",    "stream", "BT",  "ET",       "endobj", "<61>",
                                      "Tj",     "Tf",     "%",   "%%",       "q",      "x",
                                      "(a) Tj", "% b",    "a%b", "endstream"};
    while (below(100) < damage_)
      line.insert(below(static_cast<unsigned>(line.size()) + 1),
                  std::string(" ") + odd[below(16)] + " ");
    if (blanks_ > 0 && below(3) != 0)
      line += std::string(below(blanks_ + 1), below(9) == 0 ? '\t' : ' ');
    if (below(100) < remarks_) {
      line += std::string(below(2), ' ') + "%" + std::string(below(3), ' ');
      for (unsigned n = below(5); n > 0; --n)
        line += std::string(odd[below(16)]) + std::string(below(3), ' ');
      if (below(5) == 0)
        line += std::string(below(1500), '-') + std::string(below(30), ' ');
    }
    text += line + lineEnd_;
  }

  std::mt19937 random_;
  unsigned damage_, blanks_, remarks_;
  std::string lineEnd_;
};

bool isFoundIn(const std::string &text, const KeywordSearch &search,
               const std::vector<long> &starts) {
  TextStream stream(text);
  ReadBounds bounds(static_cast<long>(text.size()));
  return ContentSearch(stream, search, bounds.contents, starts).isFound();
}

TEST(ContentSearch, AnswersAsIfEachContentWereParsedForItself) {
  static const char *const keywords[] = {"a",  "ab",  "ba",     "abab",    "cab",
                                         "bb", "aaa", "\u3042", "b\u3042a"};
  const char *const wanted = std::getenv("CONTENT_SEEDS");
  const unsigned last = wanted != nullptr ? static_cast<unsigned>(std::atoi(wanted)) : 3000;
  for (unsigned seed = last > 3000 ? 3000 : 0; seed < last; ++seed) {
    RandomContents random(seed);
    const auto keyword = NSString::create(keywords[random.below(9)]);
    const KeywordSearch search(*keyword, random.below(2) == 0,
                               random.isJapanese ? macJapanese : macRoman);
    PlainContents plain(random.text, search);
    for (std::size_t i = 0; i < std::min<std::size_t>(random.starts.size(), 12); ++i) {
      ASSERT_EQ(isFoundIn(random.text, search, random.starts), plain.isFoundIn(random.starts))
          << "seed " << seed << ", rotated by " << i << ", " << random.text.size() << " bytes";
      std::rotate(random.starts.begin(), random.starts.begin() + 1, random.starts.end());
    }
  }
}

} // namespace

} // namespace searchsystem
