// What a host may notice of the reader program, and what becomes of it.

#include "platform/content/ReaderProcess.h"
#include "testing/CompressedDocument.h"
#include "testing/VirtualClock.h"
#include "tests/content/ServiceFixture.h"

#include <atomic>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <functional>
#include <memory>
#include <poll.h>
#include <seccomp.h>
#include <set>
#include <string>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>

namespace searchsystem {

namespace {

/// A fork of this process that does nothing but hold what it has inherited, until it is killed.
class IdleFork {
public:
  IdleFork() : process_(fork()) {
    if (process_ == 0) {
      // Nothing stays behind, whatever becomes of the test.
      alarm(60);
      while (true)
        pause();
    }
  }
  ~IdleFork() {
    end();
    if (process_ > 0)
      waitpid(process_, nullptr, 0);
  }
  IdleFork(const IdleFork &) = delete;
  IdleFork &operator=(const IdleFork &) = delete;

  void end() const {
    if (process_ > 0)
      kill(process_, SIGKILL);
  }
  [[nodiscard]] pid_t process() const { return process_; }

private:
  const pid_t process_;
};

/// Does something in a fork of this process and answers with its exit code, as far as one byte
/// goes.
int resultInFork(const std::function<int()> &body) {
  const pid_t process = fork();
  if (process == 0) {
    try {
      _exit(body());
    } catch (...) {
      _exit(127);
    }
  }
  int status = -1;
  waitpid(process, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::set<std::string> openDescriptors() {
  std::set<std::string> descriptors;
  for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd"))
    descriptors.insert(entry.path().filename());
  return descriptors;
}

/// A limit of the process, while this lives; one that is final stays.
class Limit {
public:
  Limit(__rlimit_resource resource, rlim_t most, bool isFinal) : resource_(resource) {
    getrlimit(resource, &before_);
    const rlimit limit{most, isFinal ? most : before_.rlim_max};
    setrlimit(resource, &limit);
  }
  ~Limit() { setrlimit(resource_, &before_); }
  Limit(const Limit &) = delete;
  Limit &operator=(const Limit &) = delete;

private:
  const __rlimit_resource resource_;
  rlimit before_{};
};

constexpr int leftBehind = 50, cannotBeTried = 51;

class HostTest : public ServiceFixture {
protected:
  pid_t starter() { return numberBehind(textOf("look"), "starter "); }

  /// Waits until the starter has a worker that sleeps, and answers with it.
  static pid_t sleepingWorkerOf(pid_t starter) {
    std::vector<pid_t> workers;
    eventually([&] { return !(workers = childrenOf(starter, true)).empty(); });
    return workers.empty() ? -1 : workers.front();
  }

  /// Asks for "word" with a limit: 0 if it was found, or the reason, or `leftBehind`. To be called
  /// in a fork of this process.
  static int reasonUnder(__rlimit_resource resource, rlim_t most, bool isFinal,
                         ContentService &service, const std::string &path) {
    ContentAnswer answer;
    const std::set<std::string> before = openDescriptors();
    // UndefinedBehaviorSanitizer opens a pipe when an object is made.
    const auto document = string(path), keyword = string("word");
    onThread([&] {
      const Limit limited(resource, most, isFinal);
      answer = service.documentHolds(*document, *keyword, false);
    });
    const bool hasChild = waitpid(-1, nullptr, WNOHANG) >= 0 || errno != ECHILD;
    useLimits(limits());
    return hasChild || openDescriptors() != before ? leftBehind
           : answer.holds                          ? 0
                                                   : static_cast<int>(answer.reason);
  }
};

TEST_F(HostTest, HandsNothingDown) {
  signal(SIGUSR1, SIG_IGN);
  signal(SIGUSR2, [](int) {});
  sigset_t blocked;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
  const int inheritable = open("/dev/null", O_RDONLY);
  ASSERT_EQ(setenv("HOSTS_SECRET", "1", 1), 0);

  const std::string seen = textOf("look");
  EXPECT_NE(seen.find("folder / environment none session own priority of death 0 signals "
                      "descriptors 0 1 2 3 4 end"),
            std::string::npos)
      << seen;
  EXPECT_NE(seen.find("own descriptors 3 4 end"), std::string::npos) << seen;
  close(inheritable);
}

/// What it was lent, of which it closes each file once that is read.
TEST_F(HostTest, HandsAPhotographWorkerNothingElse) {
  std::vector<std::string> paths;
  for (const char name : {'a', 'b', 'c'})
    paths.push_back(tree_.file(std::string(1, name), "look"));
  const char *const expected[] = {"own descriptors 0 1 2 3 end", "own descriptors 1 2 3 end",
                                  "own descriptors 2 3 end"};
  for (std::size_t i = 0; i < paths.size(); ++i) {
    ContentService service;
    EXPECT_TRUE(askPhotographs(service, paths, expected[i])[i].holds) << i;
  }
}

TEST_F(HostTest, SeesNoChildAndNoSignal) {
  static std::atomic<int> signals{0};
  for (const auto handler : {static_cast<sighandler_t>([](int) { ++signals; }), SIG_IGN}) {
    signal(SIGCHLD, handler);
    useLimits(limits());
    EXPECT_TRUE(ask("text\nA word", "word").holds);
    EXPECT_EQ(ask("crash").reason, UnreadReason::readerCrashed);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(signals, 0);
  }
  signal(SIGCHLD, SIG_DFL);
}

TEST_F(HostTest, ReapsItsOwnChildrenOnly) {
  const IdleFork child;
  siginfo_t reaped{};
  std::thread reaper([&] { waitid(P_ALL, 0, &reaped, WEXITED | WNOWAIT); });
  EXPECT_TRUE(ask("text\nA word", "word").holds);
  useLimits(limits());
  EXPECT_TRUE(ask("text\nA word", "word").holds);
  child.end();
  reaper.join();
  EXPECT_EQ(reaped.si_pid, child.process());
}

TEST_F(HostTest, OneProgramServesAllThreadsAndEndsWithItsSocket) {
  pid_t first = 0, second = 0;
  onThread([&] { first = starter(); });
  onThread([&] { second = starter(); });
  EXPECT_GT(first, 0);
  EXPECT_EQ(first, second);
  // A fork that holds the socket, too, keeps nobody.
  const IdleFork fork;
  useLimits(limits());
  EXPECT_TRUE(eventually([&] { return !isAlive(first); }));
}

TEST_F(HostTest, TheProgramEndsWithItsHost) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t host = fork();
  if (host == 0) {
    alarm(60);
    const pid_t started = starter();
    // It inherits the socket and outlives the host.
    const IdleFork fork;
    const pid_t processes[] = {started, fork.process()};
    [[maybe_unused]] const auto written = write(ends[1], processes, sizeof processes);
    while (true)
      pause();
  }
  pid_t processes[2] = {-1, -1};
  ASSERT_EQ(read(ends[0], processes, sizeof processes), ssize_t{sizeof processes});
  const auto [started, fork] = processes;
  EXPECT_TRUE(isAlive(started));
  end(host);
  waitpid(host, nullptr, 0);
  EXPECT_TRUE(eventually([process = started] { return !isAlive(process); }));
  EXPECT_TRUE(isAlive(fork));
  end(fork);
  close(ends[0]);
  close(ends[1]);
}

TEST_F(HostTest, TheProgramEndsWithoutWork) {
  ReaderLimits shortly = limits();
  shortly.idleMilliseconds = 1;
  useLimits(shortly);
  for (int i = 0; i < 5; ++i) {
    // It may end just when it is asked, which only the service makes good.
    pid_t process = -1;
    EXPECT_TRUE(eventually([&] { return (process = starter()) > 0; }));
    EXPECT_TRUE(eventually([&] { return !isAlive(process); }));
    EXPECT_TRUE(ask("text\nA word", "word").holds);
  }
}

TEST_F(HostTest, NothingIsLeftAfterASearch) {
  const VirtualClock clock;
  const std::set<std::string> before = openDescriptors();
  pid_t process = 0;
  {
    ContentService service;
    askFile(service, tree_.file("document", "text\nA word"));
    process = starter();
  }
  EXPECT_TRUE(isAlive(process));
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.01, 0);
  EXPECT_TRUE(eventually([&] { return !isAlive(process); }));
  EXPECT_EQ(openDescriptors(), before);
}

TEST_F(HostTest, AKilledProgramIsReplaced) {
  const pid_t idle = starter();
  end(idle);
  EXPECT_TRUE(ask("text\nA word", "word").holds);

  // At work it is replaced once.
  ContentService service;
  const std::string path = tree_.file("sleeping", "sleep");
  ContentAnswer answer;
  std::thread asking([&] { answer = service.documentHolds(*string(path), *string("x"), false); });
  const pid_t first = starter();
  const pid_t worker = sleepingWorkerOf(first);
  end(first);
  EXPECT_TRUE(eventually([&] { return !isAlive(worker); }));
  pid_t second = first;
  eventually([&] { return (second = starter()) != first && sleepingWorkerOf(second) > 0; });
  EXPECT_NE(second, first);
  end(second);
  asking.join();
  EXPECT_EQ(answer.reason, UnreadReason::noReader);
  EXPECT_TRUE(ask("text\nA word", "word").holds);
}

TEST_F(HostTest, AKilledWorkerHasCrashed) {
  ContentService service;
  const std::string path = tree_.file("sleeping", "sleep");
  ContentAnswer answer;
  std::thread asking([&] { answer = service.documentHolds(*string(path), *string("x"), false); });
  const pid_t process = starter();
  end(sleepingWorkerOf(process));
  asking.join();
  EXPECT_EQ(answer.reason, UnreadReason::readerCrashed);
  EXPECT_EQ(starter(), process);
}

TEST_F(HostTest, APhotographWorkerThatWaitedMayBeGone) {
  ContentService service;
  const std::vector<std::string> paths{tree_.file("photograph", "text\nx")};
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(askPhotographs(service, paths)[0].holds);
    const pid_t program = starter();
    const pid_t worker = sleepingWorkerOf(program);
    end(program);
    EXPECT_TRUE(eventually([&] { return !isAlive(program) && !isAlive(worker); }));
    EXPECT_TRUE(askPhotographs(service, paths)[0].holds);
  }
}

/// It is replaced without a word, as it may have been killed while it waited.
TEST_F(HostTest, APhotographWorkerThatWaitedMayEndWhenItIsAsked) {
  ContentService service;
  askPhotographs(service, {tree_.file("first", "crash over the next")});
  for (const std::size_t count : {1U, 20U})
    for (const PhotographContent &content :
         askPhotographs(service, std::vector(count, tree_.file("photograph", "text\nx"))))
      EXPECT_TRUE(content.holds) << count;
}

TEST_F(HostTest, PhotographWorkersEndWithTheirSearch) {
  pid_t program = 0;
  {
    ContentService service;
    // More than one worker reads.
    std::vector<std::string> paths(200, tree_.file("photograph", "text\nx"));
    for (const PhotographContent &content : askPhotographs(service, paths))
      EXPECT_TRUE(content.holds);
    program = starter();
    EXPECT_GT(sleepingWorkerOf(program), 0);
  }
  EXPECT_TRUE(eventually([&] { return childrenOf(program).empty(); }));
}

TEST_F(HostTest, CancelEndsPhotographsToo) {
  ContentService service;
  const std::vector<std::string> paths(20, tree_.file("sleeping", "sleep"));
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i)
    threads.emplace_back([&] {
      for (const PhotographContent &content : askPhotographs(service, paths))
        EXPECT_EQ(content.reason, UnreadReason::none);
    });
  const pid_t process = starter();
  EXPECT_GT(sleepingWorkerOf(process), 0);
  service.cancel();
  for (std::thread &thread : threads)
    thread.join();
  EXPECT_TRUE(eventually([&] { return childrenOf(process).empty(); }));
}

TEST_F(HostTest, CancelEndsWhatIsReadAndWhatWaits) {
  ContentService service;
  const std::string path = tree_.file("sleeping", "sleep");
  std::vector<std::thread> threads;
  // More than are read at once.
  for (int i = 0; i < 8; ++i)
    threads.emplace_back(
        [&] { EXPECT_FALSE(service.documentHolds(*string(path), *string("x"), false).holds); });
  const pid_t process = starter();
  const pid_t worker = sleepingWorkerOf(process);
  EXPECT_GT(worker, 0);
  const IdleFork fork;
  service.cancel();
  for (std::thread &thread : threads)
    thread.join();
  EXPECT_TRUE(eventually([&] { return childrenOf(process).empty(); }));
  EXPECT_FALSE(isAlive(worker));
  EXPECT_EQ(askFile(service, path).reason, UnreadReason::none);
}

TEST_F(HostTest, AMatchEndsTheReading) {
  EXPECT_TRUE(ask("endless text", "xx").holds);
  EXPECT_TRUE(eventually([process = starter()] { return childrenOf(process).empty(); }));
}

TEST_F(HostTest, TheClockLimitsAReading) {
  ReaderLimits shortly = limits();
  shortly.milliseconds = 100;
  useLimits(shortly);
  for (const char *const content : {"sleep", "slow text"}) {
    const UnreadReason reason = ask(content, "y").reason;
    EXPECT_EQ(reason, UnreadReason::tookTooLong) << content;
  }
  ContentService service;
  const auto found = askPhotographs(
      service, {tree_.file("a", "sleep"), tree_.file("b", "text\nx"), tree_.file("c", "sleep")});
  EXPECT_EQ(found[0].reason, UnreadReason::tookTooLong);
  EXPECT_TRUE(found[1].holds);
  EXPECT_EQ(found[2].reason, UnreadReason::tookTooLong);
  EXPECT_TRUE(eventually([process = starter()] { return childrenOf(process).empty(); }));
}

TEST_F(HostTest, ProgramsThatAreNoReader) {
  ReaderLimits shortly = limits();
  shortly.milliseconds = 100;
  tree_.file("silent", "#!/bin/sh\nexec sleep 3\n");
  tree_.setMode("silent", 0755);
  tree_.file("no program", "");
  tree_.setMode("no program", 0755);
  for (const std::string &program : {tree_.path("missing"), tree_.path(), tree_.path("no program"),
                                     tree_.path("silent"), std::string("/bin/true")}) {
    useLimits(shortly, program);
    EXPECT_EQ(ask("text\nA word", "word").reason, UnreadReason::noReader) << program;
    // It is not tried again for each document.
    EXPECT_EQ(ask("text\nA word", "word").reason, UnreadReason::noReader) << program;
  }
}

/// A call to the system that fails, in this process and in all that come of it.
struct ForbiddenCall {
  const char *name;
  int call;
  int error;
  /// Of its first argument these bits must be set like this.
  unsigned long bits = 0, set = 0;
};

TEST_F(HostTest, ASystemThatForbids) {
  const ForbiddenCall calls[] = {
      {"clone", SCMP_SYS(clone), EAGAIN},
      {"clone of the program", SCMP_SYS(clone), EAGAIN, CLONE_VFORK | SIGCHLD,
       CLONE_VFORK | SIGCHLD},
      {"fork in the program", SCMP_SYS(clone), EAGAIN, CLONE_VM, 0},
      {"pidfd_open", SCMP_SYS(pidfd_open), ENOSYS},
      {"close_range", SCMP_SYS(close_range), ENOSYS},
      {"execve", SCMP_SYS(execve), EACCES},
      {"socketpair", SCMP_SYS(socketpair), EMFILE},
      {"sendmsg", SCMP_SYS(sendmsg), EPERM},
      {"seccomp", SCMP_SYS(seccomp), ENOSYS},
      {"memfd_create", SCMP_SYS(memfd_create), ENOSYS},
      {"setrlimit", SCMP_SYS(prlimit64), EPERM},
      {"prctl", SCMP_SYS(prctl), EINVAL},
  };
  ContentService service;
  const std::string path = tree_.file("document", "text\nA word");
  for (const ForbiddenCall &forbidden : calls) {
    const int reason = resultInFork([&] {
      scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
      const auto bits = SCMP_A0(SCMP_CMP_MASKED_EQ, forbidden.bits, forbidden.set);
      seccomp_rule_add(filter, SCMP_ACT_ERRNO(forbidden.error), forbidden.call, 1, bits);
      std::atomic<int> result{-1};
      std::atomic<bool> isForbidden{false};
      std::thread asking([&] {
        while (!isForbidden)
          std::this_thread::yield();
        result =
            static_cast<int>(service.documentHolds(*string(path), *string("word"), false).reason);
      });
      seccomp_attr_set(filter, SCMP_FLTATR_CTL_TSYNC, 1);
      if (seccomp_load(filter) != 0)
        return 77;
      isForbidden = true;
      asking.join();
      return result.load();
    });
    EXPECT_EQ(reason, static_cast<int>(UnreadReason::noReader)) << forbidden.name;
  }
}

TEST_F(HostTest, AHostWithFewDescriptors) {
  ContentService service;
  const std::string path = tree_.file("document", "text\nA word");
  std::set<int> reasons;
  for (rlim_t most = 3; most < 24; ++most)
    reasons.insert(
        resultInFork([&] { return reasonUnder(RLIMIT_NOFILE, most, false, service, path); }));
  const std::set<int> expected{0, static_cast<int>(UnreadReason::cannotBeOpened),
                               static_cast<int>(UnreadReason::noReader)};
  EXPECT_EQ(reasons, expected);
}

TEST_F(HostTest, AProgramWithFewDescriptors) {
  useLimits(ReaderLimits(), {});
  ContentService service;
  const std::string path = tree_.file("document", CompressedDocument::showing("A word"));
  for (const rlim_t most : {64, 128, 1024})
    EXPECT_EQ(resultInFork([&] { return reasonUnder(RLIMIT_NOFILE, most, true, service, path); }),
              0);
}

TEST_F(HostTest, AHostWithFewProcesses) {
  if (geteuid() != 0)
    GTEST_SKIP() << "only root can become a user who has no process, and to root no limit applies";
  constexpr uid_t nobodyElse = 54'321;
  ContentService service;
  const std::string path = tree_.file("document", "text\nA word");
  ASSERT_EQ(chmod(tree_.path().c_str(), 0755), 0);
  std::set<int> reasons;
  for (rlim_t most = 1; most < 10; ++most)
    reasons.insert(resultInFork([&] {
      if (setresuid(nobodyElse, nobodyElse, nobodyElse) != 0 || access(READER_PROGRAM, X_OK) != 0)
        return cannotBeTried;
      return reasonUnder(RLIMIT_NPROC, most, false, service, path);
    }));
  const std::set<int> expected{0, static_cast<int>(UnreadReason::noReader)};
  if (reasons == std::set{cannotBeTried})
    GTEST_SKIP() << "the reader program lies where only root may go";
  EXPECT_EQ(reasons, expected);
}

TEST_F(HostTest, RequestsThatTheProgramRefuses) {
  const FileDescriptor requests = startReaderProgram(READER_PROGRAM);
  ASSERT_TRUE(requests);
  const auto answerTo = [&](const std::string &request, int descriptors) {
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
    const int document = open(tree_.file("document", "reason\n3").c_str(), O_RDONLY);
    const int lent[] = {ends[1], document, document};
    iovec content{const_cast<char *>(request.data()), request.size()};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof lent)] = {};
    msghdr message{};
    message.msg_iov = &content;
    message.msg_iovlen = 1;
    if (descriptors > 0) {
      message.msg_control = control;
      message.msg_controllen = CMSG_SPACE(sizeof(int) * descriptors);
      cmsghdr *const part = CMSG_FIRSTHDR(&message);
      part->cmsg_level = SOL_SOCKET;
      part->cmsg_type = SCM_RIGHTS;
      part->cmsg_len = CMSG_LEN(sizeof(int) * descriptors);
      std::memcpy(CMSG_DATA(part), lent, sizeof(int) * descriptors);
    }
    EXPECT_GE(sendmsg(requests.number(), &message, MSG_NOSIGNAL), 0);
    close(ends[1]);
    close(document);
    char record[16] = {};
    ssize_t size = 0;
    do
      size = recv(ends[0], record, sizeof record, 0);
    while (size > 0 && record[0] == static_cast<char>(ReaderRecord::alive));
    close(ends[0]);
    return size == 2 && record[0] == static_cast<char>(ReaderRecord::end) ? record[1] : -1;
  };
  const auto bytesOf = [](const ReaderRequest &request) {
    return std::string(reinterpret_cast<const char *>(&request), sizeof request);
  };
  const ReaderRequest request{.limits = limits()};
  ReaderRequest newer = request, other = request;
  ++newer.version;
  other.mark = 0;
  constexpr int refused = static_cast<int>(UnreadReason::noReader);
  EXPECT_EQ(answerTo(bytesOf(request), 2), 3);
  EXPECT_EQ(answerTo(bytesOf(newer), 2), refused);
  EXPECT_EQ(answerTo(bytesOf(newer) + "and more", 2), refused);
  EXPECT_EQ(answerTo(bytesOf(other), 2), refused);
  EXPECT_EQ(answerTo("short", 2), refused);
  EXPECT_EQ(answerTo(bytesOf(request), 1), refused);
  EXPECT_EQ(answerTo(bytesOf(request), 3), refused);
  EXPECT_EQ(answerTo(bytesOf(request), 0), -1);
  EXPECT_EQ(answerTo(bytesOf(request), 2), 3);
}

} // namespace

} // namespace searchsystem
