#pragma once

#include "platform/content/Cancellation.h"
#include "platform/content/ContentAnswer.h"
#include "platform/content/ContentSettings.h"
#include "platform/content/PhotographReading.h"
#include "platform/content/PhotographWorkers.h"
#include "platform/foundation/NSLock.h"
#include "platform/foundation/NSString.h"

#include <span>
#include <string>
#include <unordered_map>

namespace searchsystem {

/// The deep reading of one search. It says which kinds of files the search looks at, has documents
/// and photographs read by the reader program, and collects which could not be read.
///
/// Ownership: one per search, made and destroyed on the main thread, after the last call of a
/// worker has returned. Threads: as said.
class ContentService {
public:
  /// Kinds, and whom to tell of unread files, it takes from the settings in force. Main thread.
  ContentService() noexcept;
  ~ContentService();
  ContentService(const ContentService &) = delete;
  ContentService &operator=(const ContentService &) = delete;

  [[nodiscard]] const FileKinds &kinds() const noexcept { return kinds_; }

  /// Whether the text of the document at `path` holds `keyword`, by the rules of `TextComparison`.
  /// An empty keyword occurs nowhere and has nothing read. Waits for its turn, for the reader
  /// program, and for the disk; `cancel` ends that at once, with an answer of no meaning. The main
  /// thread never waits: there the answer is that there is no reader. Any thread, several at once.
  [[nodiscard]] ContentAnswer documentHolds(const NSString &path, const NSString &keyword,
                                            bool isDistinct) noexcept;

  /// Has photographs read one after another, and hands on what is known of each, in their order, to
  /// `take`, which does not throw. Closes those that are open. A keyword is found in the text of a
  /// single field, by the rules of `TextComparison`. Otherwise as `documentHolds`.
  void readPhotographs(std::span<PhotographToRead> photographs, const PhotographQuestion &question,
                       const PhotographReading::Taker &take) noexcept;

  /// Ends what is being read, and has nothing read any more. Main thread.
  void cancel() noexcept;

  /// Tells the host of the files that could not be read, each once. What its callback throws is
  /// dropped. Main thread.
  void deliverUnread() noexcept;

private:
  [[nodiscard]] ContentAnswer read(const NSString &path, const NSString &keyword, bool isDistinct);
  /// `take` is called in the order of the photographs, whatever place it is told.
  void readPhotographs(std::span<PhotographToRead> photographs, TextComparison *comparison,
                       const PhotographReading::Taker &take);
  void noteUnread(const NSString &path, UnreadReason reason) noexcept;

  const FileKinds kinds_;
  const PFContentUnreadCallback unreadCallback_;
  void *const unreadContext_;
  Cancellation cancellation_;
  PhotographWorkers photographWorkers_{cancellation_};
  NSLock lock_;
  std::unordered_map<std::string, UnreadReason> unread_ PF_GUARDED_BY(lock_);
};

} // namespace searchsystem
