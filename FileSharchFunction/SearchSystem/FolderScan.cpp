#include "FileSharchFunction/SearchSystem/FolderScan.h"

#include "platform/content/OpenedPhotograph.h"
#include "platform/content/SearchProgress.h"
#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/NSArray.h"
#include "platform/foundation/PathComponents.h"
#include "platform/foundation/TryTwice.h"

#include <algorithm>
#include <array>
#include <utility>

namespace searchsystem {

namespace {

/// At most this many files wait to be handed over together.
constexpr std::size_t mostFound = 64;

/// For how long a file that has been found may wait while others are tested.
constexpr std::chrono::milliseconds longestDelay{2};

/// At most this many files are tested ahead, so that others are while one takes long.
constexpr std::size_t mostFilesAhead = 256;

} // namespace

FolderScan::FolderScan(const RunningSearch &search, const RequestFilter &filter,
                       Distribution &distribution, WorkerPool &pool, Wanted wanted,
                       int type) noexcept
    : search_(search), filter_(filter), distribution_(distribution), pool_(pool), content_(search),
      wanted_(wanted), type_(type),
      // Unlike the distribution, which tests again, the walk ignores an empty keyword.
      contentTest_{wanted == Wanted::All || (wanted == Wanted::Content && filter.wantsAll()),
                   search.isPDFSearch() != 0 && (wanted != Wanted::All || content_.hasKeyword())},
      // Without a thread of its own the worker has nothing read deep.
      testsAhead_(search.contentService() != nullptr && search.hasContentCondition() &&
                  !MainRunLoop::shared().isMainThread()) {}

void FolderScan::run(const NSString *folder) noexcept {
  if (const NSArray *const list = search_._searchPredicate->fileList)
    searchList(*list);
  else if (folder != nullptr)
    searchFolder(*folder);
  takeAllAhead();
  handOver();
}

void FolderScan::searchList(const NSArray &list) noexcept {
  for (std::size_t i = 0; i < list.count() && search_._bCancel == 0; ++i) {
    if (const auto *const path = dynamic_cast<const NSString *>(list.objectAtIndex(i))) {
      SearchItem item(*path);
      takeItem(item);
      handOver();
    }
  }
}

void FolderScan::searchFolder(const NSString &folder) noexcept {
  std::optional<DirectoryListing> listing;
  tryTwice([&] {
    if (std::optional<DirectoryListing> opened = DirectoryListing::open(folder.view()))
      listing.emplace(*std::move(opened));
  });
  if (listing && testsAhead_) {
    SearchProgress::count(SearchProgress::shared().folders);
    mayHoldSidecars_ = listing->mayHoldNameEndingIn(sidecarEnding);
  }
  while (listing && search_._bCancel == 0) {
    const std::optional<DirectoryEntry> entry = listing->next();
    if (!entry)
      break;
    SearchItem item(folder, *listing, *entry);
    takeItem(item);
    if (!canLookAhead(*listing))
      handOver();
  }
}

void FolderScan::takeItem(SearchItem &item) noexcept {
  // If memory is short, the item is skipped; the next may succeed.
  tryTwice([&] {
    switch (filter_.kindOf(item.file, type_)) {
    case RequestFilter::Kind::Nothing:
      break;
    case RequestFilter::Kind::SubFolder:
      pool_.addFromWorker(item.path());
      break;
    case RequestFilter::Kind::File:
      takeFile(item);
      break;
    }
  });
  takeTestedAhead();
}

void FolderScan::takeFile(SearchItem &item) {
  const Judgement judgement = judge(item.file);
  if (judgement == Judgement::Fails)
    return;
  if (testsAhead_) {
    testAhead(item, judgement);
    return;
  }
  ContentAnswers answers;
  if (judgement == Judgement::Matches || content_.meets(item, contentTest_, answers))
    addFound(item.path(), answers);
}

FolderScan::Judgement FolderScan::judge(FileItem &file) const {
  switch (wanted_) {
  case Wanted::Any:
    return filter_.meetsAny(file) ? Judgement::Matches : Judgement::ContentDecides;
  case Wanted::All:
    if (!filter_.meetsAll(file))
      return Judgement::Fails;
    return search_.hasContentCondition() ? Judgement::ContentDecides : Judgement::Matches;
  case Wanted::Content:
    break;
  }
  return Judgement::ContentDecides;
}

void FolderScan::addFound(const Ref<const NSString> &path, const ContentAnswers &answers) {
  if (search_.hasContentCondition()) {
    foundAnswers_.push_back(answers);
    if (found_.empty())
      foundAt_ = Clock::now();
  }
  try {
    found_.push_back(path);
  } catch (...) {
    foundAnswers_.resize(found_.size());
    throw;
  }
}

void FolderScan::testAhead(SearchItem &item, Judgement judgement) {
  if (ahead_.size() >= mostFilesAhead)
    takeFirstAhead();
  const auto file =
      Ref<FileAhead>::adopt(new FileAhead(item.path(), {item.file.listedKind(), mayHoldSidecars_},
                                          content_, contentTest_, judgement == Judgement::Matches));
  ahead_.push_back(file);
  if (!file->isTested())
    pool_.testAhead(file);
}

void FolderScan::takeFirstAhead() noexcept {
  // What has been found waits for no test.
  if (!ahead_.front()->isTested())
    handOver();
  const Ref<FileAhead> file = std::move(ahead_.front());
  ahead_.pop_front();
  if (file->take())
    test(file);
  else
    file->wait();
  if (file->matches())
    tryTwice([&] { addFound(file->path(), file->answers()); });
  if (found_.size() >= mostFound)
    handOver();
}

void FolderScan::test(const Ref<FileAhead> &file) noexcept {
  std::array<Ref<FileAhead>, FileAhead::mostTogether> files{file};
  const std::size_t most = std::min(together_, mostOpenPhotographs());
  std::size_t count = 1;
  for (const Ref<FileAhead> &next : ahead_) {
    if (count >= most || !file->isPhotograph() || !next->isPhotograph() || !next->take())
      break;
    files[count++] = next;
  }
  const Clock::time_point start = Clock::now();
  FileAhead::test({files.data(), count});
  // What is found among them waits for all.
  together_ =
      Clock::now() - start < longestDelay ? std::min(2 * together_, FileAhead::mostTogether) : 1;
}

void FolderScan::takeTestedAhead() noexcept {
  while (!ahead_.empty() && ahead_.front()->isTested() && search_._bCancel == 0)
    takeFirstAhead();
  if (!ahead_.empty())
    handOver();
}

void FolderScan::takeAllAhead() noexcept {
  while (!ahead_.empty() && search_._bCancel == 0)
    takeFirstAhead();
  // Those who test them use this object.
  for (const Ref<FileAhead> &file : ahead_)
    if (!file->take())
      file->wait();
  ahead_.clear();
}

bool FolderScan::canLookAhead(DirectoryListing &listing) const noexcept {
  if (found_.empty())
    return true;
  const std::optional<std::string_view> next = listing.nextRegularFile();
  if (!next || found_.size() >= mostFound)
    return false;
  // The text of a document may take any time, the beginning of a photograph hardly any.
  return !search_.hasContentCondition() ||
         ((search_.isPDFSearch() == 0 || !equalIgnoringASCIICase(extensionOfName(*next), "pdf")) &&
          Clock::now() - foundAt_ < longestDelay);
}

void FolderScan::handOver() noexcept {
  if (found_.empty())
    return;
  distribution_.announce(static_cast<int>(found_.size()));
  performOnMainThreadAndWait([&] { return distributeNext(); });
}

bool FolderScan::distributeNext() noexcept {
  const std::size_t number = handedOver_++;
  const ResultMessage message{std::move(found_[number]), 1};
  distribution_.take(&message, number < foundAnswers_.size() ? &foundAnswers_[number] : nullptr);
  const std::size_t left = found_.size() - handedOver_;
  if (left > 0 && search_._bCancel == 0)
    return true;
  distribution_.announce(-static_cast<int>(left));
  found_.clear();
  foundAnswers_.clear();
  handedOver_ = 0;
  return false;
}

} // namespace searchsystem
