// A reader program for the tests. The first line of a document or photograph says what its worker
// does; the rest is what it does it with.

#include "readers/ReaderProtocol.h"
#include "readers/process/PhotographAnswer.h"
#include "readers/process/Seal.h"
#include "readers/process/Starter.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <linux/futex.h>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace {

using namespace searchsystem;

constexpr std::size_t mebibyte = 1 << 20;

void sendRecord(std::string_view record) {
  send(answerDescriptor, record.data(), record.size(), MSG_NOSIGNAL);
}

std::string record(ReaderRecord kind, std::string_view content) {
  return std::string(1, static_cast<char>(kind)).append(content);
}

/// A part of a photograph's answer that says that it has `length` bytes.
std::string part(PhotographPart kind, std::string_view content, std::uint32_t length) {
  std::string bytes(1, static_cast<char>(kind));
  bytes.append(reinterpret_cast<const char *>(&length), sizeof length);
  return bytes.append(content);
}

std::string part(PhotographPart kind, std::string_view content) {
  return part(kind, content, static_cast<std::uint32_t>(content.size()));
}

/// That of the photograph at hand.
PhotographAnswer *answer = nullptr;

/// Behind what has been said of other photographs.
void sendParts(const std::string &parts) {
  if (answer != nullptr && answer->waits())
    answer->send();
  sendRecord(record(ReaderRecord::photograph, parts));
}

const std::string endPart = part(PhotographPart::end, std::string(1, '\0'));

std::atomic<int> word{0};

void spin(int count) {
  for (int i = 0; i < count; ++i)
    word.fetch_xor(1);
}

[[noreturn]] void sleepForever() {
  word = 0;
  while (true)
    syscall(SYS_futex, &word, FUTEX_WAIT, 0, nullptr, nullptr, 0);
}

void fillMemory(std::size_t size) {
  while (true) {
    auto *const block = new char[size];
    std::memset(block, 1, size);
    [[maybe_unused]] static char *volatile kept = nullptr;
    kept = block;
  }
}

/// What each kind of worker does; one that continues ends without a fault.
const std::map<std::string, std::function<void()>, std::less<>> behaviours{
    {"open", [] { open("/dev/null", O_RDONLY); }},
    {"connect", [] { socket(AF_UNIX, SOCK_STREAM, 0); }},
    {"fork", [] { fork(); }},
    {"execute", [] { execl("/bin/true", "true", nullptr); }},
    {"signal", [] { kill(getppid(), 0); }},
    {"trace", [] { ptrace(PTRACE_TRACEME, 0, nullptr, nullptr); }},
    {"raise limits", [] { setpriority(PRIO_PROCESS, 0, 0); }},
    {"receive",
     [] {
       char byte;
       recv(answerDescriptor, &byte, 1, 0);
     }},
    {"change the file", [] { fchmod(documentDescriptor, 0777); }},
    {"seek", [] { lseek(documentDescriptor, 1, SEEK_SET); }},
    {"map the file", [] { mmap(nullptr, 1, PROT_READ, MAP_SHARED, documentDescriptor, 0); }},
    {"map code",
     [] { mmap(nullptr, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0); }},
    {"crash", [] { *static_cast<volatile int *>(nullptr) = 1; }},
    {"abort", [] { std::abort(); }},
    {"map much", [] { fillMemory(600 * mebibyte); }},
    {"fill memory", [] { fillMemory(8 * mebibyte); }},
    {"spin",
     [] {
       while (true)
         spin(1'000);
     }},
    {"sleep", [] { sleepForever(); }},
    {"throw", [] { throw 1; }},
    {"leave", [] { _exit(0); }},
    {"unknown record",
     [] {
       sendRecord("\x07");
       sleepForever();
     }},
    {"empty record",
     [] {
       sendRecord("");
       sleepForever();
     }},
    {"empty text",
     [] {
       sendRecord(record(ReaderRecord::text, ""));
       sleepForever();
     }},
    {"huge record",
     [] {
       sendRecord(record(ReaderRecord::text, std::string(150'000, 'x')));
       sleepForever();
     }},
    {"unknown reason",
     [] {
       sendRecord(record(ReaderRecord::end, "\x7F"));
       sleepForever();
     }},
    {"end without reason",
     [] {
       sendRecord(record(ReaderRecord::end, ""));
       sleepForever();
     }},
    {"endless text",
     [] {
       while (true)
         sendRecord(record(ReaderRecord::text, std::string(longestPiece, 'x')));
     }},
    {"no parts", [] { sendParts(""); }},
    {"cut part", [] { sendParts(part(PhotographPart::name, "a").substr(0, 4)); }},
    {"long part", [] { sendParts(part(PhotographPart::name, "a", 2)); }},
    {"huge part", [] { sendParts(part(PhotographPart::name, "a", UINT32_MAX)); }},
    {"unknown part", [] { sendParts(part(PhotographPart(7), "a")); }},
    {"text without name", [] { sendParts(part(PhotographPart::text, "a")); }},
    {"parts behind the end", [] { sendParts(endPart + part(PhotographPart::name, "a")); }},
    {"two ends", [] { sendParts(endPart + endPart); }},
    {"end of unknown reason", [] { sendParts(part(PhotographPart::end, "\x7F")); }},
    {"long camera", [] { sendParts(part(PhotographPart::maker, std::string(256, 'a'))); }},
    {"worker's end without reason",
     [] { sendRecord(record(ReaderRecord::end, std::string(1, '\0'))); }},
    {"endless fields",
     [] {
       while (true)
         sendParts(part(PhotographPart::name, "a") +
                   part(PhotographPart::text, std::string(longestPiece / 2, 'y')));
     }},
    {"slow text",
     [] {
       while (true) {
         sendRecord(record(ReaderRecord::text, "x"));
         spin(1'000'000);
       }
     }},
};

/// What a process can see of others: for the tests to look for what should not be there.
std::string surroundings() {
  std::ostringstream seen;
  char folder[4096] = {};
  seen << "starter " << getpid() << " folder " << getcwd(folder, sizeof folder) << " environment "
       << (environ != nullptr && *environ != nullptr ? *environ : "none") << " session "
       << (getsid(0) == getpid() ? "own" : "foreign") << " priority of death ";
  int deathSignal = 0;
  prctl(PR_GET_PDEATHSIG, &deathSignal);
  seen << deathSignal << " signals";
  for (int signal = 1; signal < NSIG; ++signal) {
    struct sigaction action {};
    if (!isSanitized && sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_DFL)
      seen << ' ' << signal;
  }
  sigset_t blocked;
  sigprocmask(SIG_BLOCK, nullptr, &blocked);
  for (int signal = 1; signal < NSIG; ++signal)
    if (sigismember(&blocked, signal) == 1)
      seen << " blocked " << signal;
  seen << " descriptors";
  for (int descriptor = 0; descriptor < 1024; ++descriptor)
    if (fcntl(descriptor, F_GETFD) >= 0)
      seen << ' ' << descriptor;
  seen << " end";
  return seen.str();
}

/// The descriptors that a sealed process holds, as far as it can tell.
std::string ownDescriptors() {
  std::ostringstream seen;
  seen << "own descriptors";
  char byte = 0;
  for (int descriptor = 0; descriptor < 1024; ++descriptor)
    if (pread(descriptor, &byte, 1, 0) >= 0 || errno != EBADF)
      seen << ' ' << descriptor;
  seen << " end";
  return seen.str();
}

class Misbehaviour final : public DocumentReader {
public:
  void prepare() override { surroundings_ = surroundings(); }

  UnreadReason read(ByteSource &document, TextSink &sink) override {
    const auto [command, bytes] = scriptIn(document);
    if (command == "look")
      sink.take(surroundings_ + " " + ownDescriptors());
    else if (command == "text")
      sink.take(bytes);
    else if (command == "reason")
      return static_cast<UnreadReason>(std::atoi(bytes.c_str()));
    else if (const auto found = behaviours.find(command); found != behaviours.end())
      found->second();
    return UnreadReason::none;
  }

  UnreadReason readPhotograph(ByteSource &photograph, ByteSource *sidecar,
                              PhotographSink &sink) override {
    answer = dynamic_cast<PhotographAnswer *>(&sink);
    if (crashesOverNext_)
      std::abort();
    const auto [command, bytes] = scriptIn(photograph);
    crashesOverNext_ = command == "crash over the next";
    if (command == "look")
      sink.takeField("Surroundings", ownDescriptors());
    else if (command == "text")
      sink.takeField("Text", bytes);
    else if (command == "sidecar")
      sink.takeField("Text", sidecar != nullptr ? scriptIn(*sidecar).second : "none");
    else if (command == "date")
      sink.takeDate({.year = 2004, .month = 5, .day = std::atoi(bytes.c_str())});
    else if (command == "reason")
      return static_cast<UnreadReason>(std::atoi(bytes.c_str()));
    else if (const auto found = behaviours.find(command); found != behaviours.end())
      found->second();
    return UnreadReason::none;
  }

private:
  /// Its first line, and the rest.
  static std::pair<std::string, std::string> scriptIn(ByteSource &file) {
    std::string bytes(file.size(), '\0');
    bytes.resize(file.read(0, bytes.data(), bytes.size()));
    const std::size_t line = std::min(bytes.find('\n'), bytes.size());
    const std::string command = bytes.substr(0, line);
    bytes.erase(0, line + 1);
    return {command, bytes};
  }

  std::string surroundings_;
  bool crashesOverNext_ = false;
};

} // namespace

int main() {
  Misbehaviour reader;
  serve(reader);
}
