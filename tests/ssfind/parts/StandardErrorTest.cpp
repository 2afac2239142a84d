#include "hosts/ssfind/StandardError.h"

#include "tests/ssfind/PseudoTerminal.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <unistd.h>

namespace ssfind {
namespace {

/// What `use` writes to standard error while that is a terminal.
template <class Use> std::string shownOnTerminal(const char *kind, Use use) {
  PseudoTerminal terminal;
  setenv("TERM", kind, 1);
  const int before = dup(STDERR_FILENO);
  dup2(terminal.inside(), STDERR_FILENO);
  {
    StandardError errors(true);
    use(errors);
  }
  dup2(before, STDERR_FILENO);
  close(before);
  return terminal.readAll();
}

TEST(StandardErrorTest, ProgressIsShownAtIntervalsAndGivesWayToMessages) {
  using namespace std::chrono_literals;
  const auto use = [](StandardError &errors) {
    const auto start = StandardError::Clock::now();
    errors.showProgress(1, start);
    errors.showProgress(2, start + 1000ms);
    errors.showProgress(3, start + 1099ms);
    errors.showProgress(4, start + 1100ms);
    errors.report("trouble");
    errors.clearProgress();
    errors.showProgress(5, start + 1200ms);
    errors.clearProgress();
  };
  EXPECT_EQ(shownOnTerminal("xterm", use), "\r\x1b[Ksearching… 2 found"
                                           "\r\x1b[Ksearching… 4 found"
                                           "\r\x1b[Kssfind: trouble\n"
                                           "\r\x1b[Ksearching… 5 found"
                                           "\r\x1b[K");
  EXPECT_EQ(shownOnTerminal("dumb", use), "ssfind: trouble\n");
}

} // namespace
} // namespace ssfind
