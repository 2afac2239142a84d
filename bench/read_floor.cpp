// The floor of a search in the content of photographs: threads open each file of a tree, read its
// first bytes, close it, and do nothing else. With --analyse they list the folders and ask
// the library for every tag of each file and for its shooting date. Prints key=value.

#include "FileSharchFunction/SearchSystem/ExifAnalysis.h"
#include "platform/foundation/DirectoryListing.h"
#include "platform/foundation/NSDate.h"

#include <CLI/CLI.hpp>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace searchsystem {

namespace {

constexpr std::size_t mostBytes = 65535;

/// Shares out the files of a tree among threads, by folders.
struct Folder {
  std::string path;
  std::vector<std::string> files;
};

std::vector<Folder> foldersOf(const std::string &root) {
  std::vector<Folder> folders{{root, {}}};
  for (std::size_t i = 0; i < folders.size(); ++i)
    for (const auto &entry : std::filesystem::directory_iterator(folders[i].path))
      if (entry.is_regular_file())
        folders[i].files.push_back(entry.path());
      else if (entry.is_directory() && !entry.is_symlink())
        folders.push_back({entry.path(), {}});
  return folders;
}

/// How many bytes were read.
std::uint64_t readOnly(const Folder &folder, std::size_t bytes) {
  thread_local char buffer[mostBytes];
  std::uint64_t sum = 0;
  for (const std::string &path : folder.files) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const ssize_t size = read(file, buffer, bytes);
    close(file);
    sum += size > 0 ? static_cast<std::uint64_t>(size) : 0;
  }
  return sum;
}

/// How many of the tags are there, the date only if it is one.
std::uint64_t analyse(FileItem &item) {
  const auto analysis = ExifAnalysis::startExifAnalysisAtPath(item);
  if (!analysis)
    return 0;
  std::uint64_t count = 0;
  for (const std::uint32_t tag : {0x010E, 0x010F, 0x0110, 0x9286})
    count += analysis->getExifInfo(tag) ? 1 : 0;
  if (const auto taken = analysis->getExifInfo(0x9003))
    count += NSDate::dateWithNaturalLanguageString(*taken) ? 1 : 0;
  analysis->endExifAnalysis();
  return count;
}

std::uint64_t analyse(const Folder &folder) {
  auto listing = DirectoryListing::open(folder.path);
  std::uint64_t sum = 0;
  while (const auto entry = listing ? listing->next() : std::nullopt) {
    FileItem item(*listing, *entry);
    if (item.isListedAsNoFolder())
      sum += analyse(item);
  }
  return sum;
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

int main(int argc, char **argv) {
  std::string root;
  unsigned threads = 5;
  std::size_t bytes = mostBytes;
  bool analyses = false;
  CLI::App application("Reads the beginning of each file of a tree.");
  application.add_option("folder", root, "the tree")->required()->check(CLI::ExistingDirectory);
  application.add_option("--threads", threads, "number of threads")
      ->check(CLI::Range(1, 256))
      ->capture_default_str();
  application.add_option("--bytes", bytes, "how many of each file")
      ->check(CLI::Range(std::size_t{1}, mostBytes))
      ->capture_default_str();
  application.add_flag("--analyse", analyses, "ask the library for the tags");
  CLI11_PARSE(application, argc, argv);

  const std::vector<Folder> folders = foldersOf(root);
  const auto begin = std::chrono::steady_clock::now();
  std::atomic<std::size_t> next{0};
  std::atomic<std::uint64_t> sum{0};
  const auto work = [&] {
    std::uint64_t ownSum = 0;
    for (std::size_t i = next++; i < folders.size(); i = next++)
      ownSum += analyses ? analyse(folders[i]) : readOnly(folders[i], bytes);
    sum += ownSum;
  };
  std::vector<std::thread> workers;
  for (unsigned i = 0; i < threads; ++i)
    workers.emplace_back(work);
  for (std::thread &worker : workers)
    worker.join();
  const std::chrono::duration<double, std::milli> total = std::chrono::steady_clock::now() - begin;
  std::cout << "total_ms=" << total.count() << "\nsum=" << sum << '\n';
  return 0;
}
