#pragma once

#include "hosts/ssfind/CommandRunner.h"
#include "hosts/ssfind/MatchOrder.h"
#include "hosts/ssfind/Options.h"
#include "hosts/ssfind/Output.h"
#include "hosts/ssfind/Place.h"
#include "hosts/ssfind/ProgressText.h"
#include "hosts/ssfind/ResultPrinter.h"
#include "hosts/ssfind/Search.h"
#include "hosts/ssfind/SearchPlan.h"
#include "hosts/ssfind/StandardError.h"
#include "hosts/ssfind/UnreadFiles.h"

#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace searchsystem::ssfind {

/// Prints, counts or collects the matches of several searches, one after another.
class Results final : public SearchFollower {
public:
  /// `mayRepeat`: several searches may find the same file; it counts once.
  Results(const OutputOptions &options, bool mayRepeat, Output &output, StandardError &errors);

  /// The next matches come from there.
  void expectFrom(const Place &place) { place_ = place; }
  /// As many files are to be looked at in the next searches, if that is known.
  void expectFiles(std::optional<std::uint64_t> count);

  Next found(std::string_view path) override;
  void unread(std::string_view path, std::int32_t reason) override;
  Next takeTurn() override;
  [[nodiscard]] std::chrono::duration<double> timeToNextTurn() override;

  /// Whether further searches can add nothing: enough was found, an interrupt came, or the reader
  /// is gone.
  [[nodiscard]] bool isOver() const;

  /// Prints what had to wait for the end of all searches, and says what could not be read.
  void finish();

  [[nodiscard]] bool hasMatches() const noexcept { return count_ != 0; }
  /// Whether a command that was to run with a match has failed.
  [[nodiscard]] bool hasFailedCommand() const noexcept {
    return commands_ && commands_->hasFailed();
  }

private:
  using Clock = StandardError::Clock;

  void take(std::string_view path);
  void deliver(const std::string &shown, const MatchDetails &details);
  [[nodiscard]] MatchDetails detailsOf(const std::string &path) const;
  void flush();
  void printCollected();
  void printUnread();

  const OutputOptions options_;
  const bool mayRepeat_;
  Output &output_;
  StandardError &errors_;
  const ResultPrinter printer_;
  const bool collects_;
  /// The count that is enough.
  const std::uint64_t enough_;

  Place place_;
  /// The path of the newest match as printed.
  std::string shown_;
  std::uint64_t count_ = 0;
  std::unordered_set<std::string> seen_;
  std::vector<CollectedMatch> collected_;
  UnreadFiles unread_;
  ProgressText progress_;
  std::optional<CommandRunner> commands_;

  Clock::time_point lastFlush_;
  bool isWaitingLong_ = false;
};

} // namespace searchsystem::ssfind
