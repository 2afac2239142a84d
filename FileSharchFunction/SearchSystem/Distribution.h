#pragma once

#include "FileSharchFunction/SearchSystem/ContentConditions.h"
#include "FileSharchFunction/SearchSystem/ResultPool.h"
#include "FileSharchFunction/SearchSystem/RunningSearch.h"
#include "platform/foundation/NSLock.h"

#include <atomic>
#include <optional>
#include <vector>

namespace searchsystem {

/// What a producer of results sends: one candidate, or its own end.
struct ResultMessage {
  /// The full path of the candidate; null in an end message.
  Ref<const NSString> ResultData;
  /// 1: a candidate; 0: the producer that sent it has finished.
  int SearchState = 0;
};

/// From the messages of the producers (walk, query, PDF pool) to the host's callback: tests the
/// content of candidates where all conditions must hold, drops duplicates, and ends the search
/// when every producer has finished and every announced candidate has arrived.
///
/// Ownership: part of the engine. Threads: main, except `announce`.
class Distribution {
public:
  /// Throws `std::bad_alloc`.
  explicit Distribution(RunningSearch &search);

  /// `count` candidates will arrive, or, if negative, will not arrive after all. Any thread.
  void announce(int count) noexcept { _returnCount += count; }

  /// Takes a message; null is ignored. One that arrives while another is handled, as from a main
  /// loop that the host's callback runs, waits until that is done. `known` is what its producer
  /// has learnt about the content of the candidate, which holds while the file stays as it was, and
  /// in a deep search also if it changes.
  void take(const ResultMessage *message, const ContentAnswers *known = nullptr) noexcept;

  /// Announces and takes a candidate.
  void takeFound(Ref<const NSString> path) noexcept;

  /// A producer has finished.
  void takeEnd() noexcept;

  /// Of two producers, one need not run at all.
  void countEnd() noexcept { ++_endCount; }

  /// Stops the metadata query, once the host's callback has returned.
  void stopQuery() noexcept;

  /// 1 when the path has not been delivered in this search, or memory is too short to check.
  [[nodiscard]] char checkDuplicatePath(const NSString *path) noexcept;

private:
  friend struct SearchEngineProbe;

  /// A message that waits, with what is known of its candidate; without one, the stop of the query.
  struct Deferred {
    std::optional<ResultMessage> message;
    ContentAnswers known;
  };

  void defer(Deferred deferred) noexcept;
  void distribute(const ResultMessage &message, const ContentAnswers *known) noexcept;
  [[nodiscard]] bool shouldDeliver(const NSString *path, const ContentAnswers *known) noexcept;
  void deliver(const NSString *path) noexcept;

  RunningSearch &search_;
  const ContentConditions content_;
  NSLock _lock;
  /// The paths that have been delivered.
  ResultPool _resultPoolArray;
  /// The end messages of two producers.
  int _endCount = 0;
  /// The candidates that have been announced, and those that have arrived.
  std::atomic<int> _returnCount{0};
  int _getCount = 0;
  /// The end waits for candidates.
  char _isEndWait = 0;

  /// Room is kept for this many deferred messages without a candidate.
  static constexpr std::size_t reservedDeferrals = 8;
  bool isDistributing_ = false;
  std::vector<Deferred> deferred_;
};

} // namespace searchsystem
