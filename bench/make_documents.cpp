// Makes documents of the layout that the PDF reader knows: an index of pages, each with a content
// stream of text shown by hexadecimal strings. The same parameters make the same documents.

#include "bench/Random.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace searchsystem {

namespace {

struct Parameters {
  std::uint64_t files = 5000;
  std::uint64_t matches = 50;
  std::uint64_t mostPages = 2000;
  bool beginsWithText = true;
  bool isSparse = false;

  /// What the marker file in a finished folder holds.
  [[nodiscard]] std::string text() const {
    return "version=2 files=" + std::to_string(files) + " matches=" + std::to_string(matches) +
           " pages=" + std::to_string(mostPages) + " text=" + std::to_string(beginsWithText) +
           (isSparse ? " sparse" : "") + "\n";
  }
};

constexpr std::array<std::string_view, 40> words{
    "image",   "the",     "of",       "camera", "exposure", "and",   "a",       "light",
    "in",      "picture", "scanner",  "to",     "document", "page",  "is",      "colour",
    "profile", "that",    "settings", "for",    "paper",    "print", "with",    "contrast",
    "on",      "sharp",   "lens",     "by",     "aperture", "as",    "shutter", "value",
    "file",    "folder",  "or",       "sample", "at",       "grey",  "from",    "archive"};
/// Occurs in no other word, nor across words.
constexpr std::string_view keyword = "lighthouse";

void appendHex(std::string &out, std::string_view text) {
  constexpr char digits[] = "0123456789ABCDEF";
  out += '<';
  for (const char c : text) {
    out += digits[static_cast<unsigned char>(c) >> 4];
    out += digits[static_cast<unsigned char>(c) & 15];
  }
  out += '>';
}

std::string lineOfWords(Random &random, std::size_t columns, bool holdsKeyword) {
  std::string line;
  while (line.size() < columns) {
    if (holdsKeyword && line.size() > columns / 2) {
      line += keyword;
      holdsKeyword = false;
    } else {
      line += random.oneOf(words);
    }
    line += ' ';
  }
  return line;
}

std::string pageContent(Random &random, const Parameters &parameters, bool holdsKeyword) {
  const std::uint64_t lines = 12 + random.below(36);
  const std::size_t columns = parameters.isSparse ? 42 : 72;
  std::string data = parameters.beginsWithText ? "" : "q\n";
  data += "BT\n/F1 10 Tf\n1 0 0 1 56 780 Tm\n14 TL\n";
  long indent = 0;
  for (std::uint64_t i = 0; i < lines; ++i) {
    if (parameters.isSparse) {
      // Relative to the line before, and within the page: other programs leave out the rest.
      const auto last = std::exchange(indent, static_cast<long>(random.below(200)));
      data += std::to_string(indent - last) + " -12 Td\n";
    }
    appendHex(data, lineOfWords(random, columns, holdsKeyword && i == lines / 2));
    data += parameters.isSparse ? " Tj\n" : " Tj\nT*\n";
  }
  data += parameters.beginsWithText ? "ET\n" : "ET\nQ\n";
  return data;
}

class Document {
public:
  Document() { text_ = "%PDF-1.4\n%\xE2\xE3\xCF\xD3\n"; }

  void add(std::uint64_t number, const std::string &body) {
    if (offsets_.size() <= number)
      offsets_.resize(number + 1);
    offsets_[number] = text_.size();
    text_ += std::to_string(number) + " 0 obj\n" + body + "\nendobj\n";
  }

  std::string finish() {
    const std::size_t start = text_.size();
    text_ += "xref\n0 " + std::to_string(offsets_.size()) + "\n0000000000 65535 f \n";
    for (std::size_t i = 1; i < offsets_.size(); ++i) {
      std::array<char, 24> entry{};
      std::snprintf(entry.data(), entry.size(), "%010zu 00000 n \n", offsets_[i]);
      text_ += entry.data();
    }
    text_ += "trailer\n<< /Size " + std::to_string(offsets_.size()) +
             " /Root 1 0 R >>\nstartxref\n" + std::to_string(start) + "\n%%EOF\n";
    return text_;
  }

private:
  std::string text_;
  std::vector<std::size_t> offsets_;
};

std::string makeDocument(Random &random, std::uint64_t pages, const Parameters &parameters,
                         bool holdsKeyword) {
  constexpr std::uint64_t firstPage = 4;
  Document document;
  document.add(1, "<< /Type /Catalog /Pages 2 0 R >>");
  std::string kids;
  for (std::uint64_t i = 0; i < pages; ++i)
    kids += " " + std::to_string(firstPage + 2 * i) + " 0 R";
  document.add(2,
               "<< /Type /Pages\n/Kids [" + kids + " ]\n/Count " + std::to_string(pages) + "\n>>");
  document.add(3, "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>");
  for (std::uint64_t i = 0; i < pages; ++i) {
    const std::uint64_t number = firstPage + 2 * i;
    const std::string data = pageContent(random, parameters, holdsKeyword && i == pages * 3 / 4);
    document.add(number, "<< /Type /Page /Parent 2 0 R /MediaBox [ 0 0 595 842 ]\n"
                         "/Resources << /Font << /F1 3 0 R >> >>\n/Contents " +
                             std::to_string(number + 1) + " 0 R\n>>");
    document.add(number + 1, "<< /Length " + std::to_string(data.size()) + " >>\nstream\n" + data +
                                 "endstream");
  }
  return document.finish();
}

/// Most documents are short; one in a hundred has up to the greatest number of pages.
std::uint64_t pagesOf(Random &random, std::uint64_t mostPages) {
  const std::uint64_t kind = random.below(100);
  const std::uint64_t most = kind == 0 ? mostPages : kind < 10 ? 100 : kind < 40 ? 20 : 6;
  return 2 + random.below(std::max<std::uint64_t>(std::min(most, mostPages), 3) - 2);
}

void writeFile(const std::filesystem::path &path, std::string_view bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file)
    throw std::system_error(errno, std::generic_category(), path.string());
}

void makeFolder(const std::filesystem::path &folder, const Parameters &parameters) {
  const std::filesystem::path marker = folder / ".make_documents";
  std::ifstream known(marker);
  if (std::string(std::istreambuf_iterator<char>(known), {}) == parameters.text())
    return;
  std::filesystem::create_directories(folder);
  Random random(20010101);
  const std::uint64_t step = parameters.matches == 0 ? 0 : parameters.files / parameters.matches;
  for (std::uint64_t i = 0; i < parameters.files; ++i) {
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "document-%05u.pdf", static_cast<unsigned>(i));
    const bool holdsKeyword = step != 0 && i % step == step / 2;
    writeFile(folder / name.data(), makeDocument(random, pagesOf(random, parameters.mostPages),
                                                 parameters, holdsKeyword));
  }
  writeFile(marker, parameters.text());
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

int main(int argc, char **argv) {
  Parameters parameters;
  std::string folder;
  CLI::App app{"Makes PDF documents whose text is uncompressed. " + std::string(keyword) +
               " occurs in some of them."};
  app.add_option("FOLDER", folder, "where to make them")->required();
  app.add_option("--files", parameters.files, "how many")->capture_default_str();
  app.add_option("--matches", parameters.matches, "how many hold the keyword")
      ->capture_default_str();
  app.add_option("--pages", parameters.mostPages, "the most pages of one")->capture_default_str();
  app.add_flag("!--graphics-first", parameters.beginsWithText,
               "begin each page with a graphics operator, so that its text is not read");
  app.add_flag("--sparse", parameters.isSparse,
               "place each string by itself, and make it half as long");
  CLI11_PARSE(app, argc, argv);
  try {
    makeFolder(folder, parameters);
  } catch (const std::exception &error) {
    std::cerr << "make_documents: " << error.what() << '\n';
    return 2;
  }
  return 0;
}
