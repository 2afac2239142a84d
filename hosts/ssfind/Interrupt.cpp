#include "hosts/ssfind/Interrupt.h"

#include "hosts/ssfind/ExitCode.h"
#include "hosts/ssfind/RunningChildren.h"

#include <csignal>
#include <initializer_list>
#include <unistd.h>

namespace searchsystem::ssfind {

namespace {

volatile std::sig_atomic_t interrupted = 0;

void interrupt(int /*signal*/) {
  if (interrupted != 0) {
    runningChildren::sendToAll(SIGKILL);
    _exit(static_cast<int>(ExitCode::Interrupted));
  }
  interrupted = 1;
}

} // namespace

void watchForInterrupts() noexcept {
  // Without SA_RESTART, so that a signal ends the wait for a list.
  struct sigaction action {};
  action.sa_handler = interrupt;
  sigemptyset(&action.sa_mask);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction previous {};
    if (sigaction(signal, nullptr, &previous) == 0 && previous.sa_handler != SIG_IGN)
      sigaction(signal, &action, nullptr);
  }
  std::signal(SIGPIPE, SIG_IGN);
}

bool wasInterrupted() noexcept { return interrupted != 0; }

} // namespace searchsystem::ssfind
