// Searches documents that are made to cost the reader much: each may take 100 ms of processor time
// for each MiB and 10 ms more, 32 times its bytes and 4 MiB of reading, and 16 times its size and 1
// MiB of memory.
//
//     hostile_documents [--all] [PART_OF_A_NAME]
//
// With --all, it prints what each document takes.

#include "faults/HostileDocument.h"
#include "faults/MemoryPeak.h"
#include "faults/Verdict.h"
#include "pdf_reader/CPDFFile.h"
#include "platform/foundation/NSString.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace searchsystem {

namespace {

using Places = std::vector<std::size_t>;
using Make = std::function<std::string(std::size_t size)>;

constexpr std::uint32_t macRoman = 0;
constexpr std::uint32_t macJapanese = 1;
constexpr double MiB = 1 << 20;
#ifdef MEMORY_IS_SANITIZED
constexpr double slowness = 12;
constexpr bool countsMemory = false;
#else
constexpr double slowness = 1;
constexpr bool countsMemory = true;
#endif

enum class Order { forward, backward, any };
constexpr std::pair<Order, const char *> orders[] = {
    {Order::forward, "in order"}, {Order::backward, "backwards"}, {Order::any, "in any order"}};

/// As many of the places as fit, named once each, into a file of that size.
Places some(Places places, std::size_t room, Order order) {
  constexpr std::size_t bytesForEach = 22;
  const std::size_t most = std::max<std::size_t>(room / bytesForEach, 1);
  if (places.size() > most) {
    for (std::size_t i = 0; i < most; ++i)
      places[i] = places[i * places.size() / most];
    places.resize(most);
  }
  if (order == Order::backward)
    std::reverse(places.begin(), places.end());
  if (order == Order::any)
    std::shuffle(places.begin(), places.end(), std::mt19937(1));
  return places;
}

struct Document {
  std::string name;
  Make make;
  std::uint32_t encoding = macRoman;
  std::size_t keywordLength = 6;
  bool opens = true;
};

/// The text before the named places, the text repeated at each of them, and the text after them
/// all.
struct Body {
  const char *name;
  std::string before, part, behind;
  /// How much of the file follows without anything that the reader looks for.
  double desert = 0;
  std::string desertPart = "x\n";
  std::uint32_t encoding = macRoman;
  std::size_t keywordLength = 6;
};

const std::string object = "1 0 obj\nstream\nBT\n<61> Tj\nET\nendstream\nendobj\n";

std::vector<Body> bodies() {
  const std::string opened = "1 0 obj\nstream\nBT\n<61> Tj\n";
  const std::string fits = "1 0 obj\nstream\nBT\n<82A0> Tj\nET\nendstream\nendobj\n";
  return {
      {"lines before the first object", "", "x\n", "\n" + object},
      {"bytes before the first object", "", "x", "\n" + object},
      {"words before the first object", "", "x ", object},
      {"comments before the first object", "", "x%c\n", object},
      {"one comment before the first object", "", "%", "\n" + object},
      {"doubled comment signs", "x", "%%", "\n" + object},
      {"blanks before the first object", "", " ", "x\n" + object},
      {"line ends before the first object", "", "\n", object},
      {"ends of other words before it", "", "xobj\n", object},
      {"beginnings of objects", "", "obj\n", opened},
      {"beginnings of objects in one line", "", "obj ", opened},
      {"lines within an object", "1 0 obj\n", "x\n", object},
      {"words within an object", "1 0 obj\n", "x ", object},
      {"lines within a text", opened, "x\n", ""},
      {"objects within a text", opened, "obj\n", "", 0.4},
      {"texts within a text", "", "obj stream BT\n", "", 0.4},
      {"texts within a text in one line", "", "obj stream BT ", "", 0.4, "x "},
      {"texts within a text, then operators", "", "obj stream BT\n", "", 0.4, "x Tf\n"},
      {"texts in one line, then operators", "", "obj stream BT ", "", 0.4, "<61> Tj "},
      {"little text, then a desert", "", object, opened, 0.4},
      {"little text, then a desert of one line", "", object, opened, 0.4, "x "},
      {"little text, then a desert, long keyword", "", object, opened, 0.4, "x\n", macRoman, 400},
      {"no text, then a desert", "", "1 0 obj\nstream\nendstream\nendobj\n", opened, 0.4},
      {"objects in one line", "", "1 0 obj stream BT <61> Tj ET endstream endobj ", ""},
      {"objects in one line, a long keyword", "", "obj stream BT <61> Tj ET endstream endobj ", "",
       0, "", macRoman, 400},
      {"small objects", "", "obj\nendobj\n", ""},
      {"small objects with text", "", "obj stream BT <61> Tj ET endstream endobj\n", ""},
      {"cut characters", "", "obj stream BT <82> Tj ET endstream endobj\n", "", 0, "", macJapanese},
      {"cut characters, then a desert", "", "obj stream BT <82> Tj ET endstream endobj\n", "", 0.4,
       "x\n", macJapanese},
      {"unreadable here and there", "", fits + "obj stream BT <FCFC> Tj ET endstream endobj\n", "",
       0, "", macJapanese},
      {"the other encoding", "", fits + "obj stream BT <8540> Tj ET endstream endobj\n", "", 0, "",
       macJapanese},
      {"objects with comments", "",
       "obj %c\nstream\nBT % \n<61> Tj % c %\nET\nendstream endobj %\n", ""},
      {"objects with blanks at the ends", "",
       "1 0 obj   \nstream   \nBT   \n<61> Tj   \nET   \nendstream   \nendobj   \n", ""},
      {"objects among blanks", "", object + std::string(1500, ' ') + "\n", ""},
      {"objects among comments", "", object + "%" + std::string(1500, '-') + "\n", ""},
      {"words waiting for their operator", opened, "x \n", ""},
      {"one string", "1 0 obj stream BT\n<", "61", "> Tj\n"},
      {"pages in lines", "", "obj /Contents 0 0 R endobj\n", ""},
      {"pages in one line", "", "obj /Contents 0 0 R endobj ", ""},
      {"pages in one line without an end", "", "obj /Contents 0 0 R ", ""},
      {"pages whose contents do not end", "1 0 obj\n", "obj /Contents [ 0 0 R\n", ""},
      {"pages whose contents do not end in one line", "", "obj /Contents [ 0 0 R ", ""},
      {"pages with blanks at the ends", "", "obj /Contents 0 0 R  \nendobj  \n", ""},
      {"pages with comments", "", "obj /Contents 0 0 R % \nendobj % x\n", ""},
      {"pages before a desert", "", "obj\n", "", 0.4},
      {"pages before a desert of one line", "", "obj ", "", 0.4, "x "},
      {"pages before a desert of one word", "", "obj ", "", 0.4, "x"},
      {"pages before a desert of comments", "", "obj\n", "", 0.4, "x%\n"},
  };
}

void addBodies(std::vector<Document> &documents) {
  for (const Body &body : bodies())
    for (const bool arePages : {false, true})
      for (const auto &[order, orderName] : orders) {
        const Make make = [=, placing = order](std::size_t size) {
          HostileDocument document;
          const auto sizeOf = [size](double part) {
            return static_cast<std::size_t>(static_cast<double>(size) * part);
          };
          document.add(body.before);
          const Places places = document.repeat(body.part, sizeOf(body.desert > 0 ? 0.3 : 0.5));
          document.add(body.behind);
          if (body.desert > 0)
            document.repeat(body.desertPart, document.text.size() + sizeOf(body.desert));
          document.add("\n");
          const std::size_t used = document.text.size();
          const Places named = some(places, used < size ? size - used : 0, placing);
          return arePages ? document.endWithPages(named) : document.endWithContents(named);
        };
        documents.push_back(
            {std::string(body.name) + (arePages ? ", pages " : ", contents ") + orderName, make,
             body.encoding, body.keywordLength});
      }
}

/// A document of one page with something in it that is repeated to fill the file.
Make filled(const std::string &before, const std::string &part, const std::string &behind) {
  return [=](std::size_t size) {
    HostileDocument document;
    const int page = document.name();
    document.add(before).repeat(part, size);
    document.add(behind);
    return document.end(" " + std::to_string(page) + " 0 R", 1);
  };
}

/// The same for what stands in the page tree itself.
Make filledTree(const std::string &part) {
  return [=](std::size_t size) {
    HostileDocument document;
    const int page = document.page({100});
    const std::size_t before = document.text.size();
    document.repeat(part, size);
    const std::string tree = document.text.substr(before);
    document.text.resize(before);
    return document.end(" " + std::to_string(page) + " 0 R ] " + tree, 1);
  };
}

/// The same between the table's keyword and its trailer, or behind the trailer's dictionary.
Make filledTable(const std::string &before, const std::string &part, bool isInTrailer) {
  return [=](std::size_t size) {
    HostileDocument document;
    const int page = document.page({100});
    std::string text = document.end(" " + std::to_string(page) + " 0 R", 1);
    const std::size_t place = isInTrailer ? text.rfind(">>") : text.rfind("trailer");
    HostileDocument filler;
    filler.text = before;
    filler.repeat(part, size);
    return text.insert(place, filler.text + "\n");
  };
}

void addOthers(std::vector<Document> &documents) {
  const std::string opened = "1 0 obj ";
  const std::pair<const char *, std::string> parts[] = {{"words", "x "},
                                                        {"lines", "x\n"},
                                                        {"one word", "x"},
                                                        {"comments", "%"},
                                                        {"blanks", " "},
                                                        {"line ends", "\n"},
                                                        {"brackets", "[ "},
                                                        {"closed brackets", "[ ] "},
                                                        {"zeros", std::string(1, '\0')},
                                                        {"numbers", "1\n"},
                                                        {"pairs", "1 1\n"},
                                                        {"CR LF", "\r\n"}};
  for (const auto &[name, part] : parts) {
    const std::string of = name;
    documents.push_back({of + " in a page", filled(opened, part, "\nendobj\n")});
    documents.push_back({of + " in a text", [part = part](std::size_t size) {
                           HostileDocument document;
                           const std::size_t start = document.text.size();
                           document.add("obj stream BT\n").repeat(part, size);
                           return document.add("\n").endWithContents({start});
                         }});
    documents.push_back({of + " in the page tree", filledTree(part)});
    documents.push_back({of + " in the table", filledTable("", part, false), 0, 6, false});
    documents.push_back({of + " in the trailer", filledTable("", part, true), 0, 6, false});
    documents.push_back({of + " alone",
                         [part = part](std::size_t size) {
                           HostileDocument document;
                           document.repeat(part, size);
                           return document.text.substr(0, size / 1017 * 1017);
                         },
                         0, 6, false});
  }
  for (const std::string key : {"/Kids [ ", "/Kids ", "/Count ", "/Kids [ 1 0 R ] ",
                                "/Kids 1 0 R\n", "/Kids [\n", "/Kids [ [ ] "})
    documents.push_back({key + "in the page tree", filledTree(key), 0, 6, false});
  for (const std::string key : {"/Contents [ ", "/Contents ", "/Contents [ 0 0 R ] ",
                                "/Contents 0 0 R\n", "/Contents [ [ 0 0 R ] "})
    documents.push_back({key + "in a page", filled(opened, key, "\nendobj\n")});
  for (const std::string word : {"trailer", "xtrailer ", "trailerx\n", "%trailer ", "trailer\n"})
    documents.push_back({word + " alone",
                         [word](std::size_t size) {
                           HostileDocument document;
                           document.repeat(word, size);
                           return document.text;
                         },
                         0, 6, false});
  documents.push_back({"entries far apart", [](std::size_t size) {
                         HostileDocument document;
                         std::string entries;
                         for (std::size_t i = 0; entries.size() < size; ++i)
                           entries += std::to_string(2'000'000'000 - 7919 * i) + " 1\n0 0 n\n";
                         const int page = document.page({100});
                         std::string text = document.end(" " + std::to_string(page) + " 0 R", 1);
                         text.insert(text.rfind("trailer"), entries);
                         return text.replace(text.rfind("/Size "), 7, "/Size 2000000001 ");
                       }});
  documents.push_back({"a size that no file has", [](std::size_t size) {
                         HostileDocument document;
                         document.repeat("x\n", size);
                         std::string text = document.endWithContents({100});
                         return text.replace(text.rfind("/Size "), 7, "/Size 2147483647 ");
                       }});
  documents.push_back({"more pages than there are", [](std::size_t size) {
                         HostileDocument document;
                         document.repeat(object, size / 2);
                         std::string kids;
                         const std::string kid =
                             " " + std::to_string(document.page({700})) + " 0 R";
                         while (kids.size() < size / 2)
                           kids += kid;
                         return document.end(kids, 4'294'967'295);
                       }});
  for (const std::string between : {"", "x\n", "% c\n"})
    documents.push_back({"sections in a chain" + between,
                         [between](std::size_t size) {
                           HostileDocument document;
                           std::string text = document.endWithContents({100});
                           const std::size_t first = text.size();
                           std::size_t next = first;
                           while (text.size() < size) {
                             text += "xref\n0 0\n" + between + "trailer\nstartxref\n";
                             next = text.size() + 9;
                             text += std::to_string(next) + "\n";
                             text.resize(next, ' ');
                           }
                           text += "trailer\n<< /Size 9 /Root 3 0 R >>\nstartxref\n";
                           return text + std::to_string(first) + "\n";
                         },
                         0, 6, false});
}

double processorSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// A document that counts how much of it was read.
class CountedDocument : public CPDFFile {
public:
  int Read(void *buffer, long count, long *done) override {
    const int result = CPDFFile::Read(buffer, count, done);
    bytesRead += result == 1 ? count : 0;
    return result;
  }
  long bytesRead = 0;
};

struct Cost {
  double milliseconds = 0;
  double readings = 0;
  double memory = 0;
  bool isOpen = false;
  int answer = 0;
};

/// What it takes to ask whether the keyword occurs, or without one, whether the document is marked.
Cost ask(const std::string &path, const NSString *keyword, std::uint32_t encoding) {
  Cost cost;
  MemoryPeak::begin();
  const double start = processorSeconds();
  {
    CountedDocument document;
    cost.isOpen = document.Open(path.c_str()) == 1;
    if (cost.isOpen)
      cost.answer =
          keyword != nullptr ? document.FindText(keyword, 0, encoding) : document.IsVordaPDF();
    cost.readings = static_cast<double>(document.bytesRead);
  }
  cost.milliseconds = (processorSeconds() - start) * 1000;
  cost.memory = static_cast<double>(MemoryPeak::bytes());
  return cost;
}

bool printsAll = false;

/// Judges one question by the best of a few times, for other programs use the processors as well.
void judge(const Document &document, const std::string &path, std::size_t size, bool asksMark) {
  const auto keyword = NSString::create(std::string(document.keywordLength, 'z'));
  doing = document.name + ", " + std::to_string(size) + " bytes" + (asksMark ? ", mark" : "");
  const double mebibytes = static_cast<double>(size) / MiB;
  const double mostTime = (10 + 100 * mebibytes) * slowness;
  constexpr int mostTries = 3;
  Cost best;
  for (int i = 0; i < mostTries && (i == 0 || best.milliseconds > mostTime); ++i) {
    const Cost cost = ask(path, asksMark ? nullptr : keyword.get(), document.encoding);
    if (i == 0 || cost.milliseconds < best.milliseconds)
      best = cost;
  }
  const auto exceeds = [](const char *what, double value, double most) {
    if (value > most)
      fault(std::string(what) + " " + std::to_string(value) + " where " + std::to_string(most) +
            " is allowed");
  };
  check(best.isOpen || !document.opens, "not opened");
  check(best.answer == 0, "found what is not there");
  exceeds("milliseconds", best.milliseconds, mostTime);
  exceeds("bytes read", best.readings, 32.0 * static_cast<double>(size) + 4 * MiB);
  if (countsMemory)
    exceeds("bytes of memory", best.memory, 16.0 * static_cast<double>(size) + MiB);
  if (printsAll)
    std::printf(
        "%-60s %8zu bytes: %5.2f of the time, %5.2f of the reading, %5.2f of the memory%s\n",
        (document.name + (asksMark ? ", mark" : "")).c_str(), size, best.milliseconds / mostTime,
        best.readings / (32.0 * static_cast<double>(size) + 4 * MiB),
        best.memory / (16.0 * static_cast<double>(size) + MiB), best.isOpen ? "" : ", not opened");
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

int main(int argc, char **argv) {
  std::string_view wanted;
  std::vector<std::size_t> sizes{std::size_t{4} << 10, std::size_t{64} << 10, std::size_t{1} << 20};
  for (int i = 1; i < argc; ++i)
    if (std::strcmp(argv[i], "--all") == 0)
      printsAll = true;
    else if (std::strcmp(argv[i], "--quick") == 0)
      sizes.resize(2);
    else
      wanted = argv[i];
  std::vector<Document> documents;
  addBodies(documents);
  addOthers(documents);

  const int descriptor = memfd_create("document", MFD_CLOEXEC);
  const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
  int asked = 0;
  for (const Document &document : documents) {
    if (document.name.find(wanted) == std::string::npos)
      continue;
    for (const std::size_t size : sizes) {
      mustGoOnWithin(600);
      if (printsAll)
        std::fflush(stdout);
      const std::string text = document.make(size);
      if (descriptor < 0 || ftruncate(descriptor, 0) != 0 ||
          pwrite(descriptor, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) {
        std::perror("hostile_documents");
        return 2;
      }
      for (const bool asksMark : {false, true}) {
        judge(document, path, text.size(), asksMark);
        ++asked;
      }
    }
  }
  return verdict(std::to_string(asked) + " questions");
}
