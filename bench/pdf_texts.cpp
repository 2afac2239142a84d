// Reads every PDF file of a folder with some threads, and prints the paths of those in which a
// keyword occurs; or does the least that this takes, in any line of the file; or, as the floor,
// reads the same bytes and does nothing.

#include "pdf_reader/CPDFFile.h"
#include "pdf_reader/VectorBytes.h"
#include "platform/foundation/NSString.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace searchsystem {

namespace {

/// Reads a file to its end; false when it cannot be read.
bool readFile(const char *path, char *buffer, std::size_t size) {
  const int descriptor = open(path, O_RDONLY | O_CLOEXEC);
  if (descriptor < 0)
    return false;
  ssize_t done = 0;
  do
    done = read(descriptor, buffer, size);
  while (done > 0);
  close(descriptor);
  return done == 0;
}

bool holds(const char *path, const NSString &keyword) {
  constexpr unsigned long macRoman = 0;
  CPDFFile document;
  return document.Open(path) == 1 && document.FindText(&keyword, 0, macRoman) == 1;
}

/// Whether a keyword of ASCII in lower case occurs in a text in any case.
bool occursIn(std::string_view text, std::string_view keyword) {
  const auto isAt = [&](std::size_t place) {
    for (std::size_t i = 0; i < keyword.size(); ++i)
      if ((text[place + i] | 0x20) != keyword[i])
        return false;
    return true;
  };
  std::size_t i = 0;
#ifdef __SSE2__
  const __m128i lower = _mm_set1_epi8(0x20);
  const __m128i first = _mm_set1_epi8(keyword.front());
  const __m128i last = _mm_set1_epi8(keyword.back());
  for (; i + keyword.size() + 15 <= text.size(); i += 16) {
    const auto load = [&](const char *bytes) {
      return _mm_or_si128(_mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes)), lower);
    };
    const __m128i begins = load(text.data() + i);
    const __m128i ends = load(text.data() + i + keyword.size() - 1);
    auto mask = static_cast<unsigned>(_mm_movemask_epi8(
        _mm_and_si128(_mm_cmpeq_epi8(begins, first), _mm_cmpeq_epi8(ends, last))));
    for (; mask != 0; mask &= mask - 1)
      if (isAt(i + static_cast<std::size_t>(std::countr_zero(mask))))
        return true;
  }
#endif
  for (; i + keyword.size() <= text.size(); ++i)
    if (isAt(i))
      return true;
  return false;
}

/// Whether a keyword occurs in the digits of a file's lines, whatever else stands in it.
bool holdsInLines(const char *path, std::string_view keyword) {
  constexpr std::size_t readAtOnce = 1 << 16;
  constexpr std::size_t textAtOnce = 1 << 13;
  const int descriptor = open(path, O_RDONLY | O_CLOEXEC);
  thread_local std::vector<char> bytes;
  thread_local std::vector<char> text;
  std::size_t kept = 0;
  std::size_t textSize = 0;
  bool isFound = false;
  const auto search = [&] {
    isFound = isFound || occursIn({text.data(), textSize}, keyword);
    const std::size_t overlap = std::min(textSize, keyword.size() - 1);
    std::memmove(text.data(), text.data() + textSize - overlap, overlap);
    textSize = overlap;
  };
  for (ssize_t done = 1; done > 0;) {
    bytes.resize(std::max(bytes.size(), kept + readAtOnce + vectorBytes::guardSize));
    text.resize(bytes.size() + textAtOnce);
    done = read(descriptor, bytes.data() + kept, readAtOnce);
    const char *const end = bytes.data() + kept + std::max<ssize_t>(done, 0);
    std::memset(bytes.data() + (end - bytes.data()), '\n', vectorBytes::guardSize);
    const char *line = bytes.data();
    while (line < end) {
      const char *rest = line + 1;
      const std::size_t size =
          *line == '<' ? vectorBytes::decodePairs(rest, text.data() + textSize) : 0;
      const char *const lineEnd = vectorBytes::scanLine(rest - 1, '\n', '\n').end;
      if (lineEnd == end && done > 0)
        break;
      textSize += size;
      if (textSize >= textAtOnce)
        search();
      line = lineEnd + 1;
    }
    kept = line < end ? static_cast<std::size_t>(end - line) : 0;
    std::memmove(bytes.data(), line, kept);
  }
  close(descriptor);
  search();
  return isFound;
}

std::vector<std::string> documentsIn(const std::string &folder) {
  std::vector<std::string> paths;
  for (const auto &entry : std::filesystem::directory_iterator(folder))
    if (entry.path().extension() == ".pdf")
      paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  return paths;
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

int main(int argc, char **argv) {
  std::string folder;
  std::string keyword;
  unsigned threadCount = 5;
  CLI::App app{"Looks for a keyword in PDF documents, or just reads them."};
  app.add_option("FOLDER", folder, "where they are")->required();
  app.add_option("KEYWORD", keyword, "what to look for; without it the files are only read");
  app.add_option("--threads", threadCount, "how many threads work")->capture_default_str();
  bool isInLines = false;
  app.add_flag("--lines", isInLines,
               "only find lines, decode digits and look for the keyword, in lower case");
  CLI11_PARSE(app, argc, argv);

  const std::vector<std::string> paths = documentsIn(folder);
  const auto string = NSString::create(keyword);
  std::vector<char> isFound(paths.size());
  std::atomic<std::size_t> next{0};
  const auto work = [&] {
    constexpr std::size_t bufferSize = 1 << 18;
    const auto buffer = std::make_unique<char[]>(bufferSize);
    for (std::size_t i = next++; i < paths.size(); i = next++)
      if (keyword.empty())
        readFile(paths[i].c_str(), buffer.get(), bufferSize);
      else if (isInLines)
        isFound[i] = holdsInLines(paths[i].c_str(), keyword) ? 1 : 0;
      else
        isFound[i] = holds(paths[i].c_str(), *string) ? 1 : 0;
  };
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < threadCount; ++i)
    threads.emplace_back(work);
  for (std::thread &thread : threads)
    thread.join();
  for (std::size_t i = 0; i < paths.size(); ++i)
    if (isFound[i] != 0)
      std::cout << paths[i] << '\n';
  return 0;
}
