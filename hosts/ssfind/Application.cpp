#include "hosts/ssfind/Application.h"

#include "hosts/ssfind/CFObject.h"
#include "hosts/ssfind/IndexTasks.h"
#include "hosts/ssfind/Interrupt.h"
#include "hosts/ssfind/OptionParser.h"
#include "hosts/ssfind/Output.h"
#include "hosts/ssfind/SearchPlan.h"
#include "hosts/ssfind/SearchRunner.h"
#include "platform/content/Content.h"

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <new>
#include <optional>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace searchsystem::ssfind {

namespace {

/// Occupies the numbers of the standard descriptors, so that no file gets them. A standard input
/// that the caller has closed still cannot be read, nor an output written to.
void occupyStandardDescriptors() noexcept {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor)
    if (fcntl(descriptor, F_GETFD) < 0)
      open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

/// Whether all output has been written, or its reader is gone.
bool wasWritten(const Output &output, StandardError &errors) {
  if (output.error() == 0 || output.error() == EPIPE)
    return true;
  errors.reportFailure("standard output", output.error());
  return false;
}

ExitCode show(std::string text) {
  StandardError errors(false);
  Output output(STDOUT_FILENO);
  output.text() = std::move(text);
  output.flush();
  return wasWritten(output, errors) ? ExitCode::Matched : ExitCode::Trouble;
}

ExitCode runIndexTask(IndexTask task) {
  StandardError errors(false);
  if (task == IndexTask::Clear)
    return clearIndex(errors) ? ExitCode::Matched : ExitCode::Trouble;
  const std::optional<std::string> status = indexStatus(errors);
  return status ? show(*status) : ExitCode::Trouble;
}

void setDepth(const Options &options) {
  PFContentSetDepth(options.isDeep ? PFContentDeep : PFContentPlain);
  if (options.extensions.empty())
    return;
  std::vector<CFObject<CFStringRef>> strings;
  std::vector<const void *> values;
  for (const std::string &extension : options.extensions) {
    strings.push_back(own(CFStringCreateWithFileSystemRepresentation(nullptr, extension.c_str())));
    values.push_back(strings.back().get());
  }
  const auto extensions = own(CFArrayCreate(
      nullptr, values.data(), static_cast<CFIndex>(values.size()), &kCFTypeArrayCallBacks));
  if (PFContentSetExtensions(extensions.get()) != 1)
    throw std::bad_alloc();
}

ExitCode runSearches(const Options &options) {
  watchForInterrupts();
  setDepth(options);
  StandardError errors(options.output.report != Report::Nothing);
  Output output(STDOUT_FILENO);
  const SearchPlan plan = planSearch(options, errors);
  Results results(options.output, SearchRunner::mayRepeat(options, plan), output, errors);
  SearchRunner(options, plan, results, errors).run();
  // A reader that closed the pipe early does not learn that nothing matched; nor is that certain.
  const bool isGivenUp = output.error() == EPIPE;
  results.finish();

  if (wasInterrupted())
    return ExitCode::Interrupted;
  if (!options.hint.empty() && !results.hasMatches() && options.output.report != Report::Nothing)
    errors.report(options.hint);
  const bool isAnswered = options.output.report == Report::Nothing && results.hasMatches();
  if (!wasWritten(output, errors) || (plan.hasFailures && !isAnswered) ||
      results.hasFailedCommand())
    return ExitCode::Trouble;
  return results.hasMatches() || isGivenUp ? ExitCode::Matched : ExitCode::NothingMatched;
}

} // namespace

ExitCode run(int argc, const char *const *argv) noexcept {
  try {
    occupyStandardDescriptors();
    tzset();
    const auto parsed = parseOptions(argc, argv);
    if (const auto *information = std::get_if<Information>(&parsed))
      return show(information->text);
    if (const auto *task = std::get_if<IndexTask>(&parsed))
      return runIndexTask(*task);
    if (const auto *error = std::get_if<UsageError>(&parsed)) {
      StandardError(false).write(error->text);
      return ExitCode::Trouble;
    }
    return runSearches(std::get<Options>(parsed));
  } catch (const std::bad_alloc &) {
    StandardError(false).report("out of memory");
  } catch (const std::exception &error) {
    StandardError(false).report(error.what());
  }
  return ExitCode::Trouble;
}

} // namespace searchsystem::ssfind
