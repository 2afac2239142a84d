#include "readers/process/Worker.h"

#include "readers/process/AnswerSink.h"

#include <csignal>
#include <fcntl.h>
#include <new>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace searchsystem {

namespace {

bool closeFrom(int first, int last) noexcept {
  return syscall(SYS_close_range, static_cast<unsigned>(first), static_cast<unsigned>(last), 0) ==
         0;
}

/// Leaves the socket, the document and what the program keeps open for all.
bool keepOnlyOwnDescriptors(const WorkerParts &parts) noexcept {
  // Both numbers lie above those that they are given.
  return dup2(parts.socket, answerDescriptor) >= 0 &&
         dup2(parts.document, documentDescriptor) >= 0 &&
         closeFrom(parts.firstForeignDescriptor, ~0) && closeFrom(0, answerDescriptor - 1);
}

/// To die with the starter, also if it is gone already.
bool dieWith(pid_t starter) noexcept {
  return prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && getppid() == starter;
}

UnreadReason readDocument(DocumentReader &reader, TextSink &sink, ByteSource &document) noexcept {
  try {
    return reader.read(document, sink);
  } catch (const std::bad_alloc &) {
    return UnreadReason::tooLarge;
  } catch (...) {
    return UnreadReason::readerCrashed;
  }
}

} // namespace

void work(const WorkerParts &parts) noexcept {
  if (!keepOnlyOwnDescriptors(parts))
    _exit(1);
  AnswerSink answer(parts.limits.text);
  FileSource document(documentDescriptor);
  if (dieWith(parts.starter) && parts.seal.apply(parts.limits))
    answer.end(readDocument(parts.reader, answer, document));
  else
    answer.end(UnreadReason::noReader);
  // Directly: a sanitizer looks for leaks in _exit.
  while (true)
    syscall(SYS_exit_group, 0);
}

} // namespace searchsystem
