#include "readers/process/Worker.h"

#include "readers/process/AnswerSink.h"
#include "readers/process/PhotographAnswer.h"
#include "readers/process/ReceivedPhotographs.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <new>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace searchsystem {

namespace {

bool closeFrom(int first, int last) noexcept {
  return syscall(SYS_close_range, static_cast<unsigned>(first), static_cast<unsigned>(last), 0) ==
         0;
}

/// Leaves the socket, and with a document that and what the program keeps open for all.
bool keepOnlyOwnDescriptors(const WorkerParts &parts) noexcept {
  if (parts.document < 0)
    return dup2(parts.socket, answerDescriptor) >= 0 && closeFrom(answerDescriptor + 1, ~0) &&
           closeFrom(0, answerDescriptor - 1);
  // Both numbers lie above those that they are given.
  return dup2(parts.socket, answerDescriptor) >= 0 &&
         dup2(parts.document, documentDescriptor) >= 0 &&
         closeFrom(parts.firstForeignDescriptor, ~0) && closeFrom(0, answerDescriptor - 1);
}

/// To die with the starter, also if it is gone already.
bool dieWith(pid_t starter) noexcept {
  return prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && getppid() == starter;
}

template <class Read> UnreadReason reasonOf(Read read) noexcept {
  try {
    return read();
  } catch (const std::bad_alloc &) {
    return UnreadReason::tooLarge;
  } catch (...) {
    return UnreadReason::readerCrashed;
  }
}

void readDocument(const WorkerParts &parts) noexcept {
  AnswerSink answer(parts.limits.text);
  FileSource document(documentDescriptor);
  UnreadReason reason = UnreadReason::noReader;
  if (dieWith(parts.starter) && parts.seal.apply(parts.limits))
    reason = reasonOf([&] { return parts.reader.read(document, answer); });
  answer.end(reason);
}

/// A file of a photograph. Before the disk is waited for, the answers that are ready are sent.
class PromptSource final : public ByteSource {
public:
  PromptSource(const LentFile &file, PhotographAnswer &answer) noexcept
      : descriptor_(file.descriptor), file_(file.descriptor, file.size), answer_(answer) {}

  [[nodiscard]] std::uint64_t size() const noexcept override { return file_.size(); }

  [[nodiscard]] std::size_t read(std::uint64_t offset, char *room,
                                 std::size_t count) noexcept override {
    std::size_t done = 0;
    if (answer_.waits() && offset < size()) {
      count = static_cast<std::size_t>(std::min<std::uint64_t>(count, size() - offset));
      const iovec inMemory{room, count};
      const ssize_t got =
          preadv2(descriptor_, &inMemory, 1, static_cast<off_t>(offset), RWF_NOWAIT);
      done = static_cast<std::size_t>(std::max<ssize_t>(got, 0));
      if (done == count)
        return done;
      answer_.send();
    }
    return done + file_.read(offset + done, room + done, count - done);
  }

private:
  int descriptor_;
  FileSource file_;
  PhotographAnswer &answer_;
};

UnreadReason readNext(DocumentReader &reader, ReceivedPhotographs &photographs,
                      PhotographAnswer &answer) noexcept {
  const ReceivedPhotographs::Next lent = photographs.next();
  PromptSource file(lent.photograph, answer);
  PromptSource sidecar(lent.sidecar, answer);
  return reasonOf([&] {
    return reader.readPhotograph(file, lent.sidecar.descriptor >= 0 ? &sidecar : nullptr, answer);
  });
}

/// Until the host has no more, or nobody listens.
void readPhotographs(const WorkerParts &parts) {
  PhotographAnswer answer;
  if (!dieWith(parts.starter) || !parts.seal.apply(parts.limits)) {
    AnswerSink(0).end(UnreadReason::noReader);
    return;
  }
  while (true) {
    ReceivedPhotographs photographs;
    if (!photographs.receive(answerDescriptor))
      return;
    for (std::size_t left = photographs.count(); left > 0; --left)
      if (!answer.end(readNext(parts.reader, photographs, answer),
                      photographs.mayAnswerTogether() && left > 1))
        return;
  }
}

} // namespace

void work(const WorkerParts &parts) noexcept {
  if (!keepOnlyOwnDescriptors(parts))
    _exit(1);
  if (parts.document >= 0)
    readDocument(parts);
  else
    readPhotographs(parts);
  // Directly: a sanitizer looks for leaks in _exit.
  while (true)
    syscall(SYS_exit_group, 0);
}

} // namespace searchsystem
