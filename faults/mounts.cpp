// Disks that are mounted for the index and below the searched folder: full, unwritable, merged from
// layers, changed below, mounted just before a search; and a process in a user namespace of its
// own. Each in a child of its own, whose mounts nobody else sees; what the system refuses is left
// out.
//
//     mounts

#include "faults/Searches.h"
#include "faults/Verdict.h"
#include "platform/metadata/IndexPlace.h"
#include "platform/metadata/MetadataIndex.h"
#include "testing/VirtualClock.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/statfs.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace searchsystem {

namespace {

constexpr int leftOut = 77;

/// Ends the child if the system refuses what the case needs.
void need(bool isDone) {
  if (!isDone)
    _exit(leftOut);
}

[[noreturn]] void endChild() {
  const int code = verdict(doing);
  std::fflush(stdout);
  _exit(code);
}

void waitForChild(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFEXITED(status) && WEXITSTATUS(status) == leftOut)
    std::printf("%s: left out, the system refuses what it needs\n", doing.c_str());
  else
    check(status == 0, "ends with status " + std::to_string(status));
  std::fflush(stdout);
}

void mountMemory(const std::string &place, unsigned long flags, const char *options) {
  need(mount("tmpfs", place.c_str(), "tmpfs", flags, options) == 0);
}

/// Lets what has just been changed become old enough for a record.
void settle() { std::this_thread::sleep_for(std::chrono::milliseconds(60)); }

void write(const std::string &path) { std::ofstream(path).put('x'); }

/// The names found below `folder`, by the index.
std::string found(const std::string &folder) {
  const VirtualClock clock;
  useIndex(true);
  Record record(folder, Wanted{.name = "beach"}, Host::take);
  std::string names;
  for (const std::string &path : Host::search(record))
    names += (names.empty() ? "" : " ") + std::filesystem::path(path).filename().string();
  return names;
}

void expect(const std::string &folder, const std::string &expected) {
  for (int i = 0; i < 3; ++i) {
    const std::string names = found(folder);
    check(names == expected, "finds " + names);
  }
}

std::uint64_t freeBytes(const std::string &place) {
  struct statfs disk {};
  statfs(place.c_str(), &disk);
  return disk.f_bavail * static_cast<std::uint64_t>(disk.f_bsize);
}

/// A tree whose index takes some 100 KiB.
void makeLargeTree(TemporaryTree &tree) {
  for (int i = 0; i < 600; ++i)
    tree.file("folder " + std::to_string(i) + "/" + std::string(60, 'n') + ".txt");
  tree.file("beach.jpg");
  settle();
}

void smallDisk(const std::string &place) {
  mountMemory(place, 0, "size=40k");
  TemporaryTree tree;
  makeLargeTree(tree);
  IndexPlace::setCacheFolderForTesting(place);
  expect(tree.path(), "beach.jpg");
  mountMemory(place, MS_REMOUNT | MS_RDONLY, "size=40k");
  write(tree.path() + "/new beach.jpg");
  expect(tree.path(), "beach.jpg new beach.jpg");
}

void diskThatOthersNeed(const std::string &place) {
  mountMemory(place, 0, "size=3m");
  const std::string ballast = place + "/ballast";
  const int file = open(ballast.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
  need(file >= 0 && fallocate(file, 0, 0, (3 << 20) - (200 << 10)) == 0);
  TemporaryTree tree;
  makeLargeTree(tree);
  IndexPlace::setCacheFolderForTesting(place);
  const std::uint64_t before = freeBytes(place);
  expect(tree.path(), "beach.jpg");
  check(before - freeBytes(place) <= (16 << 10), "takes of the last twentieth of a disk");
  need(ftruncate(file, 0) == 0);
  expect(tree.path(), "beach.jpg");
  PFMetadataIndexStatus status{};
  check(PFMetadataIndexGetStatus(&status) == 1 && status.folders == 601, "is not made");
  close(file);
}

/// What a layer below an overlay shows, and a further layer.
void overlay(const std::string &place) {
  mountMemory(place, 0, "size=9m");
  for (const char *const name : {"/cache", "/below", "/below/both", "/below/one", "/other",
                                 "/other/both", "/upper", "/upper/both", "/work", "/merged"})
    need(mkdir((place + name).c_str(), 0700) == 0);
  write(place + "/below/both/1beach.jpg");
  write(place + "/below/one/2beach.jpg");
  write(place + "/other/both/3beach.jpg");
  write(place + "/upper/both/4beach.jpg");
  settle();
  IndexPlace::setCacheFolderForTesting(place + "/cache");
  const std::string merged = place + "/merged";
  const auto mountLayers = [&](const std::string &lower) {
    const std::string options =
        "lowerdir=" + lower + ",upperdir=" + place + "/upper,workdir=" + place + "/work";
    need(mount("overlay", merged.c_str(), "overlay", 0, options.c_str()) == 0);
  };
  const std::string below = place + "/below";
  mountLayers(below);
  expect(merged, "1beach.jpg 4beach.jpg 2beach.jpg");
  write(merged + "/one/5beach.jpg");
  write(merged + "/both/6beach.jpg");
  settle();
  expect(merged, "1beach.jpg 4beach.jpg 6beach.jpg 2beach.jpg 5beach.jpg");
  need(umount(merged.c_str()) == 0);
  write(below + "/both/7beach.jpg");
  settle();
  mountLayers(below);
  expect(merged, "1beach.jpg 4beach.jpg 6beach.jpg 7beach.jpg 2beach.jpg 5beach.jpg");
  need(umount(merged.c_str()) == 0);
  mountLayers(place + "/other:" + below);
  expect(merged, "1beach.jpg 3beach.jpg 4beach.jpg 6beach.jpg 7beach.jpg 2beach.jpg 5beach.jpg");
}

void mountedJustBefore(const std::string &place) {
  mountMemory(place, 0, "size=9m");
  need(mkdir((place + "/cache").c_str(), 0700) == 0 && mkdir((place + "/tree").c_str(), 0700) == 0);
  IndexPlace::setCacheFolderForTesting(place + "/cache");
  const std::string tree = place + "/tree", in = tree + "/in";
  need(mkdir(in.c_str(), 0700) == 0);
  write(in + "/beach.jpg");
  for (const bool byIndex : {true, false})
    for (int i = 0; i < 50; ++i) {
      const auto look = [&] {
        const VirtualClock clock;
        useIndex(byIndex);
        Record record(tree, Wanted{.name = "beach"}, Host::take);
        return Host::search(record).size();
      };
      check(look() == 1, "does not find all");
      mountMemory(in, 0, "size=40k");
      write(in + "/other beach.jpg");
      check(look() == 0, "finds what is on another file system");
      need(umount(in.c_str()) == 0);
    }
}

/// The same user, who may list less: what root has seen is not for one without its powers.
void userNamespace(const std::string &place) {
  mountMemory(place, 0, "size=9m");
  for (const char *const name : {"/cache", "/tree", "/tree/closed"})
    need(mkdir((place + name).c_str(), 0700) == 0);
  write(place + "/tree/closed/beach.jpg");
  need(chown((place + "/tree/closed").c_str(), 1, 1) == 0);
  settle();
  IndexPlace::setCacheFolderForTesting(place + "/cache");
  // Only a process with one thread may enter a namespace, and none that has used the library may
  // fork and use it.
  const pid_t child = fork();
  if (child == 0) {
    expect(place + "/tree", "beach.jpg");
    PFMetadataIndexStatus status{};
    check(PFMetadataIndexGetStatus(&status) == 1 && status.folders == 2, "makes no index");
    endChild();
  }
  waitForChild(child);
  need(unshare(CLONE_NEWUSER) == 0);
  std::ofstream("/proc/self/setgroups") << "deny";
  std::ofstream("/proc/self/uid_map") << "0 0 1";
  std::ofstream("/proc/self/gid_map") << "0 0 1";
  need(geteuid() == 0);
  expect(place + "/tree", "");
}

void run(const char *name, const std::function<void(const std::string &)> &test) {
  doing = name;
  const TemporaryTree disk;
  const pid_t child = fork();
  if (child == 0) {
    need(unshare(CLONE_NEWNS) == 0 &&
         mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0);
    test(disk.path());
    endChild();
  }
  waitForChild(child);
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

int main() {
  // A child has none of the library's threads: this process must not use the library before.
  run("a small disk, and one that cannot be written", smallDisk);
  run("a disk that others need", diskThatOthersNeed);
  run("an overlay", overlay);
  run("a mount made just before", mountedJustBefore);
  run("a user namespace", userNamespace);
  doing = "in all";
  return verdict("mounts");
}
