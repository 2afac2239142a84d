// The least work of a walk: opens, lists and closes every folder below the given one, looks at each
// name and kind, and does nothing with them. With --dates it also reads the modification date of
// every file with a searched extension. It skips hidden names, as a search does.

#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <getopt.h>
#include <sys/stat.h>
#include <unistd.h>

namespace searchsystem {

namespace {

/// The folders that wait to be listed.
class FolderQueue {
public:
  explicit FolderQueue(std::string root) { folders_.push_back(std::move(root)); }

  /// Takes the folders that a worker has found, and returns its next one; none when all are done.
  /// Empties `found`.
  bool exchange(std::vector<std::string> &found, std::string &next, bool hadFolder) {
    std::unique_lock lock(mutex_);
    for (std::string &folder : found)
      folders_.push_back(std::move(folder));
    const std::size_t added = found.size();
    found.clear();
    busy_ -= hadFolder ? 1 : 0;
    if (waiting_ > 0 && (added > 1 || (busy_ == 0 && folders_.empty())))
      changed_.notify_all();
    while (folders_.empty() && busy_ > 0) {
      ++waiting_;
      changed_.wait(lock);
      --waiting_;
    }
    if (folders_.empty())
      return false;
    next = std::move(folders_.back());
    folders_.pop_back();
    ++busy_;
    return true;
  }

private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> folders_;
  int busy_ = 0;
  int waiting_ = 0;
};

struct Counts {
  std::uint64_t folders = 0;
  std::uint64_t entries = 0;
  std::uint64_t candidates = 0;
  std::int64_t newest = 0;
};

bool isCandidate(std::string_view name) {
  if (name.size() < 4 || name[name.size() - 4] != '.')
    return false;
  const auto lower = [&](std::size_t fromEnd) {
    return static_cast<unsigned char>(name[name.size() - fromEnd]) | 0x20U;
  };
  const std::uint32_t extension = lower(3) << 16 | lower(2) << 8 | lower(1);
  const auto code = [](std::string_view text) {
    return static_cast<std::uint32_t>(text[0] << 16 | text[1] << 8 | text[2]);
  };
  return extension == code("jpg") || extension == code("tif") || extension == code("pdf") ||
         extension == code("pct");
}

class Worker {
public:
  Worker(FolderQueue &queue, bool asksDates) : queue_(queue), asksDates_(asksDates) {}

  void run() {
    std::string folder;
    bool hasFolder = false;
    while (queue_.exchange(found_, folder, hasFolder)) {
      list(folder);
      hasFolder = true;
    }
  }

  [[nodiscard]] const Counts &counts() const { return counts_; }

private:
  void list(const std::string &folder) {
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) {
      std::perror(folder.c_str());
      return;
    }
    ++counts_.folders;
    for (;;) {
      const ssize_t size = getdents64(descriptor, buffer_.data(), buffer_.size());
      if (size <= 0)
        break;
      for (ssize_t position = 0; position < size;) {
        const auto *entry = reinterpret_cast<const dirent64 *>(buffer_.data() + position);
        position += entry->d_reclen;
        take(folder, descriptor, *entry);
      }
    }
    close(descriptor);
  }

  void take(const std::string &folder, int descriptor, const dirent64 &entry) {
    if (entry.d_name[0] == '.')
      return;
    ++counts_.entries;
    if (isFolder(descriptor, entry)) {
      std::string &path = found_.emplace_back();
      const std::size_t length = std::strlen(entry.d_name);
      path.reserve(folder.size() + 1 + length);
      path.append(folder).append(1, '/').append(entry.d_name, length);
    } else if (asksDates_ && isCandidate(entry.d_name)) {
      askDate(descriptor, entry.d_name);
    }
  }

  static bool isFolder(int descriptor, const dirent64 &entry) {
    if (entry.d_type != DT_UNKNOWN)
      return entry.d_type == DT_DIR;
    struct stat status {};
    return fstatat(descriptor, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISDIR(status.st_mode);
  }

  void askDate(int descriptor, const char *name) {
    ++counts_.candidates;
    struct statx status {};
    constexpr int flags = AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC;
    if (statx(descriptor, name, flags, STATX_MTIME, &status) == 0 &&
        status.stx_mtime.tv_sec > counts_.newest)
      counts_.newest = status.stx_mtime.tv_sec;
  }

  FolderQueue &queue_;
  const bool asksDates_;
  Counts counts_;
  std::vector<std::string> found_;
  std::vector<char> buffer_ = std::vector<char>(std::size_t{64} << 10);
};

Counts listTree(const char *root, unsigned threadCount, bool asksDates) {
  FolderQueue queue(root);
  std::vector<Worker> workers;
  workers.reserve(threadCount);
  for (unsigned i = 0; i < threadCount; ++i)
    workers.emplace_back(queue, asksDates);
  {
    std::vector<std::jthread> threads;
    for (Worker &worker : workers)
      threads.emplace_back([&worker] { worker.run(); });
  }
  Counts all;
  for (const Worker &worker : workers) {
    all.folders += worker.counts().folders;
    all.entries += worker.counts().entries;
    all.candidates += worker.counts().candidates;
    all.newest = std::max(all.newest, worker.counts().newest);
  }
  return all;
}

int usage() {
  std::fputs("usage: listing_floor [--dates] [--threads N] FOLDER\n", stderr);
  return 2;
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

int main(int argc, char **argv) {
  unsigned threads = 5;
  bool asksDates = false;
  const option options[] = {
      {"dates", no_argument, nullptr, 'd'}, {"threads", required_argument, nullptr, 't'}, {}};
  for (int choice = 0; (choice = getopt_long(argc, argv, "", options, nullptr)) != -1;) {
    if (choice == 'd')
      asksDates = true;
    else if (choice == 't')
      threads = static_cast<unsigned>(std::strtoul(optarg, nullptr, 10));
    else
      return usage();
  }
  if (optind + 1 != argc || threads == 0 || threads > 1000)
    return usage();

  const Counts counts = listTree(argv[optind], threads, asksDates);
  std::printf("entries=%ju folders=%ju", std::uintmax_t{counts.entries},
              std::uintmax_t{counts.folders});
  if (asksDates)
    std::printf(" candidates=%ju newest=%jd", std::uintmax_t{counts.candidates},
                std::intmax_t{counts.newest});
  std::puts("");
  return 0;
}
