// Reads documents and looks for a word in them, in this process or, as a search does, by the reader
// program; prints what that cost all processes together.
//
// usage: seal_cost [--sealed] [--times N] LIST_OF_PATHS

#include "platform/content/ContentService.h"
#include "platform/content/TextComparison.h"
#include "readers/ByteSource.h"
#include "readers/documents/DocumentText.h"

#include <CLI/CLI.hpp>

#include <fcntl.h>
#include <fstream>
#include <functional>
#include <iostream>
#include <string>
#include <string_view>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace searchsystem {

namespace {

constexpr const char *keyword = "lighthouses";

/// The few documents that need a map from outside lack text.
class NoMaps final : public CharacterMaps {
public:
  [[nodiscard]] std::string read(std::string_view /*name*/) const override { return {}; }
};

class ComparingSink final : public TextSink {
public:
  bool take(std::string_view utf8) override { return !comparison_.take(utf8); }

private:
  TextComparison comparison_{keyword, false};
};

void readHere(const std::string &path) {
  const int document = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  FileSource source(document);
  ComparingSink sink;
  static_cast<void>(readDocumentText(source, NoMaps(), sink));
  close(document);
}

double milliseconds(const timeval &time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

/// Does something in a child and waits for it and for all that it leaves behind; the processor time
/// of them all.
double costOf(const std::function<void()> &body) {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  if (fork() == 0) {
    std::thread(body).join();
    _exit(0);
  }
  while (wait(nullptr) > 0)
    continue;
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  return milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

int main(int argc, char **argv) {
  std::string list;
  bool isSealed = false;
  int times = 1;
  CLI::App app{"Measures what it costs to read documents in sealed processes."};
  app.add_option("LIST", list, "a file with their paths")->required();
  app.add_flag("--sealed", isSealed, "by the reader program");
  app.add_option("--times", times, "how often each is read");
  CLI11_PARSE(app, argc, argv);
  std::vector<std::string> paths;
  std::ifstream lines(list);
  for (std::string line; std::getline(lines, line);)
    paths.insert(paths.end(), static_cast<std::size_t>(times), line);

  ContentService service;
  const double cost = costOf([&] {
    const Ref<const NSString> word = NSString::create(keyword);
    for (const std::string &path : paths)
      if (isSealed)
        static_cast<void>(service.documentHolds(*NSString::create(path), *word, false));
      else
        readHere(path);
  });
  std::cout << "documents=" << paths.size() << "\ncpu_ms=" << cost << '\n';
  return 0;
}
