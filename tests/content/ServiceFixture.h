#pragma once

#include "platform/content/ContentService.h"
#include "platform/content/ReaderConnection.h"
#include "platform/foundation/CoreFoundation.h"
#include "platform/foundation/MainLoop.h"
#include "testing/TemporaryTree.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <thread>
#include <vector>

namespace searchsystem {

/// Asks the service for documents that say what their reader does: see `reader/Misbehaviour.cpp`.
class ServiceFixture : public testing::Test {
protected:
  ServiceFixture() { useLimits(limits()); }

  ~ServiceFixture() override {
    ReaderConnection::shared().useForTesting({}, ReaderLimits());
    PFContentSetUnreadCallback(nullptr, nullptr);
  }

  /// Far less than what is allowed outside tests.
  static ReaderLimits limits() {
    return {.memory = 256ULL << 20,
            .text = 4ULL << 20,
            .processorSeconds = 1,
            .milliseconds = 20'000,
            .idleMilliseconds = 10'000};
  }

  static void useLimits(const ReaderLimits &limits, std::string program = READER_PROGRAM) {
    ReaderConnection::shared().useForTesting(std::move(program), limits);
  }

  static Ref<const NSString> string(std::string_view text) { return NSString::create(text); }

  /// On a thread of its own, as the main thread has no document read.
  static void onThread(const std::function<void()> &body) { std::thread(body).join(); }

  ContentAnswer askFile(ContentService &service, const std::string &path,
                        std::string_view keyword = "x", bool isDistinct = false) {
    ContentAnswer answer;
    onThread([&] { answer = service.documentHolds(*string(path), *string(keyword), isDistinct); });
    return answer;
  }

  /// Photographs, on a thread of their own.
  std::vector<PhotographContent> askPhotographs(ContentService &service,
                                                const std::vector<std::string> &paths,
                                                std::string_view keyword = "x",
                                                bool wantsDate = false) {
    std::vector<PhotographContent> found;
    onThread([&] {
      std::vector<Ref<const NSString>> strings;
      std::vector<PhotographToRead> photographs;
      for (const std::string &path : paths)
        photographs.push_back({.path = strings.emplace_back(string(path)).get()});
      const Ref<const NSString> text = string(keyword);
      service.readPhotographs(photographs, {.keyword = text.get(), .wantsDate = wantsDate},
                              [&](std::size_t place, const PhotographContent &content) {
                                EXPECT_EQ(place, found.size());
                                found.push_back(content);
                              });
    });
    EXPECT_EQ(found.size(), paths.size());
    found.resize(paths.size());
    return found;
  }

  ContentAnswer ask(std::string_view content, std::string_view keyword = "x",
                    bool isDistinct = false) {
    ContentService service;
    return askFile(service, tree_.file("document", content), keyword, isDistinct);
  }

  /// The text that a reader gives, its records one behind the other.
  std::string textOf(std::string_view content) {
    const FileDescriptor document(
        open(tree_.file("raw document", content).c_str(), O_RDONLY | O_CLOEXEC));
    const auto lent = ReaderConnection::shared().lend(document.number());
    std::string text;
    std::vector<char> record(1 << 20);
    while (lent) {
      const ssize_t size = recv(lent->answer.number(), record.data(), record.size(), 0);
      if (size <= 0 || record[0] == static_cast<char>(ReaderRecord::end))
        break;
      if (record[0] == static_cast<char>(ReaderRecord::text))
        text.append(record.data() + 1, static_cast<std::size_t>(size) - 1);
    }
    return text;
  }

  /// The number that stands behind `label` in a text.
  static int numberBehind(std::string_view text, std::string_view label) {
    int number = -1;
    const std::size_t at = text.find(label);
    if (at != std::string_view::npos)
      std::from_chars(text.data() + at + label.size(), text.data() + text.size(), number);
    return number;
  }

  /// The processes that a process has made and that live, or only those that sleep.
  static std::vector<pid_t> childrenOf(pid_t parent, bool areAsleep = false) {
    std::vector<pid_t> children;
    for (const auto &entry : std::filesystem::directory_iterator("/proc")) {
      const std::string name = entry.path().filename();
      if (name.find_first_not_of("0123456789") != std::string::npos)
        continue;
      std::ifstream file(entry.path() / "stat");
      std::string line;
      std::getline(file, line);
      const std::size_t nameEnd = line.rfind(')');
      if (nameEnd == std::string::npos)
        continue;
      char state = 0;
      int parentOfIt = 0;
      if (std::sscanf(line.c_str() + nameEnd + 1, " %c %d", &state, &parentOfIt) == 2 &&
          parentOfIt == parent && (areAsleep ? state == 'S' : state != 'Z'))
        children.push_back(std::stoi(name));
    }
    return children;
  }

  /// Kills one process; no number that means several, or none, does anything.
  static void end(pid_t process) {
    ASSERT_GT(process, 1);
    kill(process, SIGKILL);
  }

  static bool isAlive(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string line;
    std::getline(file, line);
    const std::size_t nameEnd = line.rfind(')');
    return nameEnd != std::string::npos && line.compare(nameEnd + 2, 1, "Z") != 0;
  }

  /// Waits until `condition` holds, for some seconds at most; whether it does.
  static bool eventually(const std::function<bool()> &condition) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
      if (std::chrono::steady_clock::now() > limit)
        return false;
      std::this_thread::yield();
    }
    return true;
  }

  TemporaryTree tree_;
};

} // namespace searchsystem
