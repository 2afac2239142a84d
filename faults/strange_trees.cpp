// Searches trees that are made to break a search: pipes and devices with the names of files, loops,
// folders a thousand levels deep, many files in one folder, names of any bytes, trees that change
// under the search; and an index that may not grow.
//
//     strange_trees [--files COUNT] [--seconds OF_CHANGES]

#include "faults/Process.h"
#include "faults/Searches.h"
#include "faults/Verdict.h"
#include "platform/content/ReaderConnection.h"
#include "platform/metadata/IndexPlace.h"
#include "platform/metadata/MetadataIndex.h"
#include "testing/SystemCallsGuard.h"
#include "testing/VirtualClock.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <iterator>
#include <random>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace searchsystem {

namespace {

const Wanted anyName{.name = ""};
const Wanted beachInContent{.content = "beach", .isInExif = true, .isInPDF = true, .any = true};

int searches = 0;

Paths search(const std::string &folder, const Wanted &wanted, bool byIndex) {
  ++searches;
  useIndex(byIndex);
  Record record(folder, wanted, Host::take);
  return Host::search(record);
}

/// Searches in every way, and expects the same of each; the second search of an index knows the
/// folders.
void expect(const std::string &folder, const Wanted &wanted, Paths expected) {
  std::sort(expected.begin(), expected.end());
  const std::string before = doing;
  for (const int way : {0, 1, 2}) {
    doing = before + (way == 0 ? ", walk" : ", index");
    const Paths found = search(folder, wanted, way > 0);
    if (found == expected)
      continue;
    Paths missing, strange;
    std::set_difference(expected.begin(), expected.end(), found.begin(), found.end(),
                        std::back_inserter(missing));
    std::set_difference(found.begin(), found.end(), expected.begin(), expected.end(),
                        std::back_inserter(strange));
    missing.resize(std::min<std::size_t>(missing.size(), 3));
    strange.resize(std::min<std::size_t>(strange.size(), 3));
    fault(std::to_string(found.size()) + " found instead of " + std::to_string(expected.size()) +
          "; missing: " + relative(missing, folder) + "; strange: " + relative(strange, folder));
  }
  doing = before;
}

void specialFiles() {
  TemporaryTree tree;
  makeSmallTree(tree);
  Paths all;
  for (const char *const name :
       {"1beach.jpg", "2Beach.pdf", "3other.jpg", "in/4beach.tif", "in/5other.pdf",
        "in/deep/6beach.pct", "in/deep/link beach.jpg", "shelf.doc/7beach.jpg"})
    all.push_back(tree.path(name));
  for (const char *const name : {"pipe beach.jpg", "pipe.pdf", "in/pipe.tif"})
    all.push_back(tree.fifo(name));
  const int unused = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::snprintf(address.sun_path, sizeof address.sun_path, "%s/socket.pdf", tree.path().c_str());
  if (bind(unused, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0)
    all.emplace_back(address.sun_path);
  close(unused);
  // The terminal of whoever runs this would be read, an endless file never end.
  for (const auto &[name, number] : {std::pair("zero.jpg", 5), std::pair("tty.pdf", 0)})
    if (mknod(tree.path(name).c_str(), S_IFCHR | 0666, makedev(name[0] == 'z' ? 1 : 5, number)) ==
        0)
      all.push_back(tree.path(name));
  all.push_back(tree.link("to zero.jpg", "/dev/zero"));
  all.push_back(tree.link("to pipe.pdf", tree.path("pipe.pdf")));
  expect(tree.path(), anyName, all);
  expect(tree.path(), beachInContent,
         {tree.path("1beach.jpg"), tree.path("2Beach.pdf"), tree.path("3other.jpg"),
          tree.path("in/4beach.tif"), tree.path("in/5other.pdf")});
}

void loops() {
  TemporaryTree tree;
  const Paths all{tree.file("a/b/file.jpg"), tree.link("to file.jpg", "a/b/file.jpg")};
  tree.link("self.jpg", "self.jpg");
  tree.link("one.pdf", "two.pdf");
  tree.link("two.pdf", "one.pdf");
  tree.link("a/up", "..");
  tree.link("a/b/top", tree.path());
  tree.link("a/b/here.jpg", ".");
  tree.link("gone.tif", "nothing");
  expect(tree.path(), anyName, all);
}

void deepFolders() {
  for (const auto &[name, levels] : {std::pair("d", 1000), std::pair("a longer name", 1000)}) {
    TemporaryTree tree;
    std::string folder;
    Paths all;
    for (int i = 0; i < levels; ++i) {
      folder += std::string(i == 0 ? "" : "/") + name;
      const std::string path = tree.path(folder + "/file.jpg");
      if (i % 20 == 0 || path.size() > PATH_MAX - 40)
        tree.file(folder + "/file.jpg");
      else
        continue;
      if (path.size() < PATH_MAX)
        all.push_back(path);
      else if (path.size() > PATH_MAX + 400)
        break;
    }
    expect(tree.path(), anyName, all);
  }
}

void manyFiles(int count) {
  constexpr int secondsForFiles = 300;
  TemporaryTree tree;
  const std::string folder = tree.folder("many");
  Paths all;
  for (int i = 0; i < count; ++i) {
    if (i % 1000 == 0)
      mustGoOnWithin(secondsForFiles);
    const std::string path = folder + "/" + std::to_string(i) + (i % 2 == 0 ? ".jpg" : ".txt");
    close(open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644));
    if (i % 2 == 0)
      all.push_back(path);
  }
  expect(tree.path(), anyName, all);
  // All are removed at once.
  mustGoOnWithin(secondsForFiles);
}

void anyBytes() {
  TemporaryTree tree;
  Paths all;
  for (int byte = 1; byte < 256; ++byte) {
    if (byte == '/')
      continue;
    const std::string character(1, static_cast<char>(byte));
    const std::string path = tree.file(character + "x.jpg");
    if (byte != '.')
      all.push_back(path);
    // A dot alone is the folder itself, and a name that begins with one is hidden.
    if (byte != '.')
      all.push_back(tree.file(character + "/" + character + ".PDF"));
  }
  for (const char *const name :
       {"\xc0\xaf.jpg", "\xed\xa0\x80.jpg", "\xf4\x90\x80\x80.jpg", "\xff\xfe.jpg", "%s%n%d.jpg",
        "' OR 1=1 --.jpg", "-rf.jpg", " .jpg", "e\xcc\x81.jpg", "\xe2\x80\xae gpj.jpg"})
    all.push_back(tree.file(name));
  all.push_back(tree.file(std::string(251, '\xff') + ".jpg"));
  all.push_back(tree.file(std::string(255, 'f') + "/" + std::string(251, 'n') + ".tif"));
  expect(tree.path(), anyName, all);
}

/// What happens to the tree between two calls of a search, and how often it has.
std::function<void(const std::string &name)> change;
std::atomic<bool> isChanging{false};

void changeOnce(const std::string &name) {
  if (change && !isChanging.exchange(true))
    change(name);
}

/// Folders stay as they are.
void resize(TemporaryTree &tree, const std::string &name, std::uintmax_t size) {
  std::error_code ignored;
  std::filesystem::resize_file(tree.path(name), size, ignored);
}

/// Everything that can happen to one file or folder between its listing and its reading.
void changesInBetween() {
  using Act = void (*)(TemporaryTree &, const std::string &);
  constexpr std::pair<const char *, Act> acts[] = {
      {"vanishes", [](TemporaryTree &tree,
                      const std::string &name) { std::filesystem::remove_all(tree.path(name)); }},
      {"becomes empty",
       [](TemporaryTree &tree, const std::string &name) { resize(tree, name, 0); }},
      {"is cut short",
       [](TemporaryTree &tree, const std::string &name) { resize(tree, name, 40); }},
      {"grows",
       [](TemporaryTree &tree, const std::string &name) { resize(tree, name, 50'000'000); }},
      {"becomes a pipe",
       [](TemporaryTree &tree, const std::string &name) {
         std::filesystem::remove_all(tree.path(name));
         tree.fifo(name);
       }},
      {"becomes a folder",
       [](TemporaryTree &tree, const std::string &name) {
         std::filesystem::remove_all(tree.path(name));
         tree.file(name + "/inside.jpg");
       }},
      {"becomes a file",
       [](TemporaryTree &tree, const std::string &name) {
         std::filesystem::remove_all(tree.path(name));
         tree.file(name);
       }},
      {"becomes a link to the top",
       [](TemporaryTree &tree, const std::string &name) {
         std::filesystem::remove_all(tree.path(name));
         tree.link(name, tree.path());
       }},
      {"becomes a link to an endless file",
       [](TemporaryTree &tree, const std::string &name) {
         std::filesystem::remove_all(tree.path(name));
         tree.link(name, "/dev/zero");
       }},
  };
  SystemCalls calls{};
  calls.listEntries = [](int folder, void *buffer, std::size_t size) {
    const ssize_t filled = realSystemCalls().listEntries(folder, buffer, size);
    changeOnce("list");
    return filled;
  };
  calls.statusAt = [](int folder, const char *path, int flags, struct statx *status) {
    const int result = realSystemCalls().statusAt(folder, path, flags, status);
    if (std::strstr(path, "victim") != nullptr)
      changeOnce("status");
    return result;
  };
  calls.openAt = [](int folder, const char *path, int flags) {
    const int file = realSystemCalls().openAt(folder, path, flags);
    if (std::strstr(path, "victim") != nullptr)
      changeOnce("open");
    return file;
  };
  const SystemCallsGuard guard(calls);
  for (const auto &[what, act] : acts)
    for (const char *const victim : {"victim.jpg", "victim.pdf", "victim", "victim.doc"})
      for (const char *const call : {"list", "status", "open"})
        for (const bool byIndex : {false, true})
          for (const Wanted &wanted : {anyName, beachInContent}) {
            doing = std::string(victim) + " " + what + " at " + call;
            TemporaryTree tree;
            makeSmallTree(tree);
            if (std::filesystem::path(victim).extension() == ".jpg")
              std::filesystem::copy(tree.path("1beach.jpg"), tree.path(victim));
            else if (std::filesystem::path(victim).extension() == ".pdf")
              std::filesystem::copy(tree.path("2Beach.pdf"), tree.path(victim));
            else
              tree.file(std::string(victim) + "/in it.jpg");
            isChanging = false;
            change = [&](const std::string &now) {
              if (now == call)
                act(tree, victim);
              else
                isChanging = false;
            };
            const Paths found = search(tree.path(), wanted, byIndex);
            change = nullptr;
            int others = 0;
            for (const std::string &path : found)
              others += path.find("/victim") == std::string::npos ? 1 : 0;
            const int expected = wanted.any ? 5 : 8;
            check(others == expected, std::to_string(others) + " of the other files found");
            // In it may be found what was there before or after; and a folder that becomes a link
            // after it has been listed is searched as what it is then.
            check(std::strstr(what, "the top") != nullptr ||
                      found.size() - static_cast<std::size_t>(others) <= 2,
                  "too much is found");
          }
}

/// A tree of which half changes all the time, while the other half must be found.
void changesAllTheTime(int seconds) {
  TemporaryTree tree;
  makeSmallTree(tree);
  std::atomic<bool> isOver{false};
  std::thread changer([&] {
    std::mt19937 random(1);
    const char *const names[] = {"v/a.jpg", "v/b.pdf", "v/c",      "v/c/d.tif",
                                 "v/e.doc", "v/w",     "v/w/f.jpg"};
    const auto any = [&] { return tree.path(names[random() % std::size(names)]); };
    while (!isOver) {
      std::error_code error;
      const std::string path = any();
      switch (random() % 7) {
      case 0:
        std::filesystem::remove_all(path, error);
        break;
      case 1:
        std::filesystem::create_directories(path, error);
        break;
      case 2:
        std::filesystem::copy_file(tree.path("2Beach.pdf"), path,
                                   std::filesystem::copy_options::overwrite_existing, error);
        break;
      case 3:
        std::filesystem::rename(path, any(), error);
        break;
      case 4:
        mkfifo(path.c_str(), 0644);
        break;
      case 5:
        std::filesystem::create_symlink(".", path, error);
        break;
      default:
        std::filesystem::resize_file(path, random() % 2000, error);
        break;
      }
    }
  });
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  for (int i = 0; std::chrono::steady_clock::now() < end; ++i) {
    const Wanted &wanted = i % 2 == 0 ? anyName : beachInContent;
    const Paths found = search(tree.path(), wanted, i % 4 < 2);
    const auto others = std::count_if(found.begin(), found.end(), [&](const std::string &path) {
      return !path.starts_with(tree.path("v"));
    });
    check(others == (wanted.any ? 5 : 8), std::to_string(others) + " of the steady files found");
  }
  isOver = true;
  changer.join();
}

/// The process has no descriptor left, or only a few.
void noDescriptors() {
#ifdef __SANITIZE_ADDRESS__
  // A sanitizer that looks at memory through a pipe takes good objects for bad ones then.
  std::printf("left out with sanitizers: ");
#else
  TemporaryTree tree;
  makeSmallTree(tree);
  addDeepFiles(tree);
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  for (const Way &way : allWays()) {
    const std::unique_ptr<Record> record = makeRecord(way, tree.path(), Host::take);
    for (int left = 0; left < (way.isDeep ? 32 : 12); ++left) {
      doing = std::string(way.name) + " with " + std::to_string(left) + " descriptors";
      useIndex(way.usesIndex);
      searchDeep(way.isDeep);
      const int first = open("/dev/null", O_RDONLY | O_CLOEXEC);
      close(first);
      rlimit few = before;
      few.rlim_cur = static_cast<rlim_t>(first + left);
      setrlimit(RLIMIT_NOFILE, &few);
      const Paths found = Host::search(*record);
      setrlimit(RLIMIT_NOFILE, &before);
      ++searches;
      const Paths unread = Host::unread();
      // A reader that could not be started is not tried again for a while.
      ReaderConnection::shared().useForTesting({}, {});
      const Paths all = Host::search(*record);
      check(std::includes(all.begin(), all.end(), found.begin(), found.end()),
            "finds what it should not: " + relative(found, tree.path()));
      check(relative(all, tree.path()) == way.found, "afterwards it finds too little");
      Paths known = found;
      known.insert(known.end(), unread.begin(), unread.end());
      std::sort(known.begin(), known.end());
      // A deep search holds sockets and descriptors of its workers besides, more or fewer as they
      // run.
      if (left >= (way.isDeep ? 28 : 10))
        check(std::includes(known.begin(), known.end(), all.begin(), all.end()),
              "finds less: " + relative(found, tree.path()));
    }
  }
  searchDeep(false);
#endif
}

/// Limits the size of the process's files, as a full disk does.
void fullDisk() {
  TemporaryTree tree;
  makeSmallTree(tree);
  for (int i = 0; i < 300; ++i)
    tree.file("folder " + std::to_string(i) + "/file.txt");
  const Way &way = *std::find_if(allWays().begin(), allWays().end(), [](const Way &one) {
    return std::strcmp(one.name, "index") == 0;
  });
  const std::unique_ptr<Record> record = makeRecord(way, tree.path(), Host::take);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  for (rlim_t size = 0; size <= 1 << 17; size = size * 3 / 2 + 1000) {
    doing = "files of " + std::to_string(size) + " bytes at most";
    PFMetadataIndexClear();
    rlimit small = before;
    small.rlim_cur = size;
    setrlimit(RLIMIT_FSIZE, &small);
    for (int i = 0; i < 2; ++i)
      check(relative(search(tree.path(), way.wanted, true), tree.path()) == way.found,
            "does not find all");
    setrlimit(RLIMIT_FSIZE, &before);
    check(relative(search(tree.path(), way.wanted, true), tree.path()) == way.found,
          "does not find all afterwards");
  }
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

int main(int argc, char **argv) {
  int files = 20'000, seconds = 5;
  for (int i = 1; i + 1 < argc; i += 2)
    (std::strcmp(argv[i], "--files") == 0 ? files : seconds) = std::atoi(argv[i + 1]);
  TemporaryTree cache;
  const int threadsBefore = threadsAtRest();
  const VirtualClock clock;
  IndexPlace::setCacheFolderForTesting(cache.path());
  const std::pair<const char *, std::function<void()>> trees[] = {
      {"special files", specialFiles},
      {"loops of links", loops},
      {"deep folders", deepFolders},
      {"names of any bytes", anyBytes},
      {"many files", [&] { manyFiles(files); }},
      {"changes in between", changesInBetween},
      {"changes all the time", [&] { changesAllTheTime(seconds); }},
      {"no descriptors", noDescriptors},
      {"a full disk", fullDisk},
  };
  int descriptors = -1;
  for (const auto &[name, run] : trees) {
    doing = name;
    run();
    doing = name;
    if (descriptors < 0)
      descriptors = Holdings::now().descriptors;
    check(Holdings::now().descriptors == descriptors, "descriptors left open");
    std::printf("%s: done\n", name);
    std::fflush(stdout);
  }
  doing = "at the end";
  const int left = threadsAfterRest(threadsBefore) - threadsBefore;
  check(left <= 0, std::to_string(left) + " threads left behind");
  return verdict(std::to_string(searches) + " searches");
}
