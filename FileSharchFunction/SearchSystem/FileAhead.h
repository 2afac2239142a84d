#pragma once

#include "FileSharchFunction/SearchSystem/ContentConditions.h"
#include "platform/foundation/NSCondition.h"
#include "platform/foundation/NSLock.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <span>
#include <utility>

namespace searchsystem {

/// A file of a worker's folder or list that is tested before its turn, where its content decides.
///
/// Ownership: counted; borrows the conditions, which must stay until whoever has taken it has
/// tested it. Threads: any.
class FileAhead final : public NSObject {
public:
  /// What its folder's listing shows of a file.
  struct Listed {
    FileKind kind = FileKind::Unknown;
    /// Whether an XMP file may lie beside it.
    bool mayHaveSidecar = true;
  };
  /// One that `matches` already needs no test.
  FileAhead(Ref<const NSString> path, Listed listed, const ContentConditions &conditions,
            ContentTest test, bool matches) noexcept;

  /// Whether the caller is the first to ask, and so the one to call `test`.
  [[nodiscard]] bool take() noexcept { return !isTaken_.exchange(true); }
  /// Tests files that the caller has taken, each as soon as those before it are tested.
  static void test(std::span<const Ref<FileAhead>> files) noexcept;

  /// The most files that are tested together: a photograph that is read deep with others costs less
  /// than one by itself.
  static constexpr std::size_t mostTogether = 16;
  /// Whether it pays to test others with it.
  [[nodiscard]] bool isPhotograph() const noexcept { return isPhotograph_; }

  [[nodiscard]] bool isTested() const noexcept { return isTested_.load(); }
  /// Returns once it is tested.
  void wait() noexcept;

  /// What the test has shown.
  [[nodiscard]] bool matches() const noexcept { return matches_; }
  [[nodiscard]] const Ref<const NSString> &path() const noexcept { return path_; }
  [[nodiscard]] const ContentAnswers &answers() const noexcept { return answers_; }

private:
  /// Photographs that a deep reading decides.
  struct Undecided;

  /// Leaves a file to a deep reading if that decides, and makes `photograph` ready for it.
  [[nodiscard]] ContentVerdict judge(PhotographToRead &photograph) noexcept;
  void end(bool matches) noexcept;

  const Ref<const NSString> path_;
  const Listed listed_;
  const ContentConditions &conditions_;
  const ContentTest test_;
  const bool isPhotograph_;
  std::atomic<bool> isTaken_;
  std::atomic<bool> isTested_;
  /// Written before `isTested_`, as are the answers.
  bool matches_;
  ContentAnswers answers_;
  NSLock lock_;
  NSCondition tested_;
};

} // namespace searchsystem
