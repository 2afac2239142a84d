// Reads every PDF file of a folder with some threads, and prints the paths of those in which a
// keyword occurs; or, as the floor, reads the same bytes and does nothing.

#include "pdf_reader/CPDFFile.h"
#include "platform/foundation/NSString.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

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

std::vector<std::string> documentsIn(const std::string &folder) {
  std::vector<std::string> paths;
  for (const auto &entry : std::filesystem::directory_iterator(folder))
    if (entry.path().extension() == ".pdf")
      paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  return paths;
}

} // namespace

int main(int argc, char **argv) {
  std::string folder;
  std::string keyword;
  unsigned threadCount = 5;
  CLI::App app{"Looks for a keyword in PDF documents, or just reads them."};
  app.add_option("FOLDER", folder, "where they are")->required();
  app.add_option("KEYWORD", keyword, "what to look for; without it the files are only read");
  app.add_option("--threads", threadCount, "how many threads work")->capture_default_str();
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
