#pragma once

#include "FileSharchFunction/SearchSystem/ContentConditions.h"
#include "platform/foundation/NSCondition.h"
#include "platform/foundation/NSLock.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"

#include <atomic>
#include <utility>

namespace searchsystem {

/// A file of a worker's folder or list that is tested before its turn, where its content decides.
///
/// Ownership: counted; borrows the conditions, which must stay until whoever has taken it has
/// tested it. Threads: any.
class FileAhead final : public NSObject {
public:
  /// One that `matches` already needs no test.
  FileAhead(Ref<const NSString> path, const ContentConditions &conditions, ContentTest test,
            bool matches) noexcept
      : path_(std::move(path)), conditions_(conditions), test_(test), isTaken_(matches),
        isTested_(matches), matches_(matches) {}

  /// Whether the caller is the first to ask, and so the one to call `test`.
  [[nodiscard]] bool take() noexcept { return !isTaken_.exchange(true); }
  void test() noexcept;

  [[nodiscard]] bool isTested() const noexcept { return isTested_.load(); }
  /// Returns once it is tested.
  void wait() noexcept;

  /// What the test has shown.
  [[nodiscard]] bool matches() const noexcept { return matches_; }
  [[nodiscard]] const Ref<const NSString> &path() const noexcept { return path_; }
  [[nodiscard]] const ContentAnswers &answers() const noexcept { return answers_; }

private:
  const Ref<const NSString> path_;
  const ContentConditions &conditions_;
  const ContentTest test_;
  std::atomic<bool> isTaken_;
  std::atomic<bool> isTested_;
  /// Written before `isTested_`, as are the answers.
  bool matches_;
  ContentAnswers answers_;
  NSLock lock_;
  NSCondition tested_;
};

} // namespace searchsystem
