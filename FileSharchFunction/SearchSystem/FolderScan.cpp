#include "FileSharchFunction/SearchSystem/FolderScan.h"

#include "platform/foundation/NSArray.h"
#include "platform/foundation/PathComponents.h"
#include "platform/foundation/TryTwice.h"

#include <utility>

namespace searchsystem {

namespace {

/// At most this many files wait to be handed over together.
constexpr std::size_t mostFound = 64;

/// For how long a file that has been found may wait while others are tested.
constexpr std::chrono::milliseconds longestDelay{2};

} // namespace

void FolderScan::run(const NSString *folder) noexcept {
  if (const NSArray *const list = search_._searchPredicate->fileList) {
    for (std::size_t i = 0; i < list->count() && search_._bCancel == 0; ++i) {
      if (const auto *const path = dynamic_cast<const NSString *>(list->objectAtIndex(i))) {
        SearchItem item(*path);
        takeItem(item);
        handOver();
      }
    }
    return;
  }
  std::optional<DirectoryListing> listing;
  if (folder != nullptr)
    tryTwice([&] {
      if (std::optional<DirectoryListing> opened = DirectoryListing::open(folder->view()))
        listing.emplace(*std::move(opened));
    });
  while (listing && search_._bCancel == 0) {
    const std::optional<DirectoryEntry> entry = listing->next();
    if (!entry)
      break;
    SearchItem item(*folder, *listing, *entry);
    takeItem(item);
    if (!canLookAhead(*listing))
      handOver();
  }
  handOver();
}

void FolderScan::takeItem(SearchItem &item) noexcept {
  // Where memory is short the item is passed over, and the next may fare better.
  tryTwice([&] {
    switch (filter_.kindOf(item.file, type_)) {
    case RequestFilter::Kind::Nothing:
      break;
    case RequestFilter::Kind::SubFolder:
      pool_.addFromWorker(item.path());
      break;
    case RequestFilter::Kind::File:
      if (meetsConditions(item))
        addFound(item.path());
      break;
    }
  });
}

bool FolderScan::meetsConditions(SearchItem &item) {
  const SearchPredicate &record = *search_._searchPredicate;
  bool testsPDF = search_.isPDFSearch() != 0;
  if (wanted_ == Wanted::Any)
    return filter_.meetsAny(item.file) || content_.meetsAny(item);
  if (wanted_ == Wanted::Content) {
    if (record.isAndSearch == 0)
      return content_.meetsAny(item);
  } else {
    if (!filter_.meetsAll(item.file))
      return false;
    if (!search_.hasContentCondition())
      return true;
    // Unlike the distribution, which tests again, the walk ignores an empty keyword.
    testsPDF = testsPDF && content_.hasKeyword();
  }
  answers_ = {};
  return content_.meetsAll(item, testsPDF, answers_);
}

void FolderScan::addFound(const Ref<const NSString> &path) {
  if (search_.hasContentCondition()) {
    foundAnswers_.push_back(answers_);
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
