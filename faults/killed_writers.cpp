// Kills some processes at a random time while they write the index, again and again, and searches
// with the index they leave.
//
//     killed_writers [--seconds S] [--seed FIRST]

#include "faults/Searches.h"
#include "faults/Verdict.h"
#include "platform/foundation/SystemCalls.h"
#include "platform/metadata/IndexPlace.h"
#include "platform/metadata/MetadataIndex.h"
#include "testing/VirtualClock.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace searchsystem {

namespace {

using Clock = std::chrono::steady_clock;

/// Their records take more than is written at a time.
constexpr int folderCount = 1500;

/// A folder that was changed longer ago than this can have a record.
constexpr std::chrono::milliseconds settlingTime{60};

std::string folderName(unsigned number) {
  return "folder " + std::to_string(number % 30) + "/" + std::to_string(number);
}

std::string fileName(unsigned number) {
  return std::string(200, 'n') + " " + std::to_string(number) + ".jpg";
}

/// Makes or removes a file in some of the folders.
void change(const std::string &tree, std::mt19937 &random) {
  for (unsigned count = random() % 400; count > 0; --count) {
    const std::string file =
        tree + "/" + folderName(random() % folderCount) + "/" + fileName(random() % 6);
    if (std::error_code error; !std::filesystem::remove(file, error))
      std::ofstream(file).flush();
  }
  std::this_thread::sleep_for(settlingTime);
}

std::unique_ptr<Record> photographs(const std::string &tree) {
  return std::make_unique<Record>(tree, Wanted{.name = ".jpg"}, Host::take);
}

/// Writes the index until it is killed.
[[noreturn]] void writeForEver(const std::string &tree, std::uint32_t seed) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const VirtualClock clock;
  const std::unique_ptr<Record> record = photographs(tree);
  std::mt19937 random(seed);
  useIndex(true);
  for (;;) {
    if (random() % 2 == 0)
      PFMetadataIndexClear();
    else
      change(tree, random);
    Host::search(*record);
  }
}

/// Whether an index is in the making.
bool isBeingMade() {
  std::error_code error;
  return std::filesystem::exists(
      std::filesystem::path(PFMetadataIndexGetPath()).replace_extension("new"), error);
}

/// Of the index; 0 if there is none.
std::uintmax_t sizeOfIndex() {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(PFMetadataIndexGetPath(), error);
  return error ? 0 : size;
}

std::atomic<int> listings{0};

/// The system's calls, with the listings counted.
SystemCalls countingCalls() {
  SystemCalls calls = realSystemCalls();
  calls.listEntries = [](int folder, void *buffer, std::size_t size) {
    ++listings;
    return realSystemCalls().listEntries(folder, buffer, size);
  };
  return calls;
}

class KilledWriters {
public:
  KilledWriters(const char *program, std::uint32_t seed) : program_(program), random_(seed) {
    for (unsigned i = 0; i < folderCount; ++i)
      for (unsigned file = 0; file < 3; ++file)
        tree_.file(folderName(i) + "/" + fileName(file));
    IndexPlace::setCacheFolderForTesting(cache_.path());
    setSystemCallsForTesting(&calls_);
    record_ = photographs(tree_.path());
  }
  ~KilledWriters() { setSystemCallsForTesting(nullptr); }
  KilledWriters(const KilledWriters &) = delete;
  KilledWriters &operator=(const KilledWriters &) = delete;

  void run() {
    doing = "after " + std::to_string(writers_) + " writers";
    if (!killSome())
      return;
    if (isBeingMade())
      ++interrupted_;
    std::this_thread::sleep_for(settlingTime);
    useIndex(false);
    const Paths all = Host::search(*record_);
    useIndex(true);
    for (const char *const which : {" left", ", second search", ", third search"}) {
      doing = "after " + std::to_string(writers_) + " writers," + which;
      listings = 0;
      check(Host::search(*record_) == all, "finds something else than the walk");
    }
    check(listings == 0, std::to_string(listings) + " listings, so the index is of no use");
    PFMetadataIndexStatus status{};
    check(PFMetadataIndexGetStatus(&status) == 1 && status.folders == folderCount + 30 + 1,
          "the index claims " + std::to_string(status.folders) + " folders");
  }

  [[nodiscard]] int writers() const noexcept { return writers_; }
  /// How often an index was left in the making.
  [[nodiscard]] int interrupted() const noexcept { return interrupted_; }

private:
  /// Starts this program as a writer; 0 if that fails.
  [[nodiscard]] pid_t startOne() {
    std::array<std::string, 5> words{program_, "--write", tree_.path(), cache_.path(),
                                     std::to_string(random_())};
    std::array<char *, 6> arguments{};
    std::transform(words.begin(), words.end(), arguments.begin(),
                   [](std::string &word) { return word.data(); });
    pid_t child = 0;
    const bool isStarted =
        posix_spawn(&child, program_.c_str(), nullptr, nullptr, arguments.data(), environ) == 0;
    return check(isStarted, "cannot be started") ? child : 0;
  }

  /// Runs up to four writers at once and kills them after a while, one soon after the other.
  bool killSome() {
    std::vector<pid_t> children(1 + random_() % 4);
    for (pid_t &child : children)
      if (child = startOne(); child == 0)
        return false;
    writers_ += static_cast<int>(children.size());
    // At any time, or soon after one has begun to write.
    if (random_() % 4 == 0) {
      std::this_thread::sleep_for(std::chrono::milliseconds(random_() % 300));
    } else {
      const Clock::time_point end = Clock::now() + std::chrono::seconds(5);
      const std::uintmax_t size = sizeOfIndex();
      while (!isBeingMade() && sizeOfIndex() == size && Clock::now() < end)
        std::this_thread::yield();
      std::this_thread::sleep_for(std::chrono::microseconds(random_() % 3'000));
    }
    bool areKilled = true;
    for (const pid_t child : children) {
      kill(child, SIGKILL);
      int status = 0;
      waitpid(child, &status, 0);
      areKilled &= check(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL, "has ended by itself");
    }
    return areKilled;
  }

  const std::string program_;
  std::mt19937 random_;
  TemporaryTree tree_;
  const TemporaryTree cache_;
  const VirtualClock clock_;
  const SystemCalls calls_ = countingCalls();
  std::unique_ptr<Record> record_;
  int writers_ = 0;
  int interrupted_ = 0;
};

std::uint32_t numberOf(const char *text) {
  return static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10));
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

int main(int argc, char **argv) {
  if (argc == 5 && std::strcmp(argv[1], "--write") == 0) {
    IndexPlace::setCacheFolderForTesting(argv[3]);
    writeForEver(argv[2], numberOf(argv[4]));
  }
  std::uint32_t seconds = 20, seed = 1;
  for (int i = 1; i + 1 < argc; i += 2)
    (std::strcmp(argv[i], "--seed") == 0 ? seed : seconds) = numberOf(argv[i + 1]);
  KilledWriters writers(argv[0], seed);
  const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
  do
    writers.run();
  while (Clock::now() < end);
  doing = "in all";
  check(writers.interrupted() > 0, "nobody was killed while writing");
  return verdict(std::to_string(writers.writers()) + " writers killed, " +
                 std::to_string(writers.interrupted()) + " times while the index was made anew");
}
