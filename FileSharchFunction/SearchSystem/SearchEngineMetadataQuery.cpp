#include "FileSharchFunction/SearchSystem/SearchEngine.h"

#include "FileSharchFunction/SearchSystem/EntryFilters.h"
#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSClass.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/PathComponents.h"
#include "platform/foundation/ResolvedPath.h"
#include "platform/foundation/TryTwice.h"
#include "platform/metadata/NSCompoundPredicate.h"
#include "platform/metadata/NSPredicate.h"

#include <algorithm>
#include <utility>

namespace searchsystem {

namespace {

constexpr double delayOfRefusal = 0.1;

using Predicate = Ref<const NSPredicate>;
using Predicates = NSCompoundPredicate::Subpredicates;

Predicate joined(Predicates all, bool mustMeetAll) {
  if (all.size() == 1)
    return all.front();
  return mustMeetAll ? NSCompoundPredicate::andPredicateWithSubpredicates(std::move(all))
                     : NSCompoundPredicate::orPredicateWithSubpredicates(std::move(all));
}

/// Whether a file is of a kind that a deep search looks at.
class KindPredicate final : public NSPredicate {
public:
  explicit KindPredicate(const FileKinds &kinds) : kinds_(kinds) {}

  bool evaluateWithObject(MetadataCandidate &file) const override {
    return kinds_.includes(extensionOfName(file.name), typeOfAll);
  }
  bool needsNameOnly() const noexcept override { return true; }

private:
  const FileKinds kinds_;
};

/// The files of the classes that may meet a request. A deep one has no conditions on content here.
Predicate typePredicate(const SearchEngine &engine, bool mustMeetAll) {
  if (const ContentService *const service = engine.contentService())
    return Predicate::adopt(new KindPredicate(service->kinds()));
  const Predicate pdf = NSPredicate::predicateWithFormat("kMDItemFSName like[c] '*.pdf'");
  const Predicate jpeg = NSPredicate::predicateWithFormat("kMDItemFSName like[c] '*.jpg'");
  const Predicate tiff = NSPredicate::predicateWithFormat("kMDItemFSName like[c] '*.tif'");
  const Predicate pict = NSPredicate::predicateWithFormat("kMDItemFSName like[c] '*.pct'");
  Predicates types;
  if (!mustMeetAll) {
    types = {jpeg, tiff, pdf, pict};
  } else {
    if (engine.isPDFSearch() != 0)
      types.push_back(pdf);
    if (engine.isExifSearch() != 0 || engine.isTokenDateSearch() != 0)
      types.push_back(jpeg);
    if (types.empty())
      types = {pdf, pict, jpeg, tiff};
  }
  return joined(std::move(types), false);
}

/// The conditions that the index can answer. A range of dates counts only with both its ends.
Predicates conditions(const SearchPredicate &record) {
  Predicates all;
  if (record.nameKeyword != nullptr && record.nameKeyword->length() != 0)
    all.push_back(NSPredicate::predicateWithFormat(
        record.isDistinct != 0 ? "kMDItemFSName in %@" : "kMDItemFSName in[c] %@",
        {record.nameKeyword}));
  if (record.modDateStart != nullptr && record.modDateEnd != nullptr)
    all.push_back(NSCompoundPredicate::andPredicateWithSubpredicates(
        {NSPredicate::predicateWithFormat("kMDItemFSContentChangeDate > %@", {record.modDateStart}),
         NSPredicate::predicateWithFormat("kMDItemFSContentChangeDate < %@",
                                          {record.modDateEnd})}));
  return all;
}

} // namespace

void SearchEngine::spotlightSearch() noexcept {
  if (NSClass::named("NSPredicate") == nullptr ||
      NSClass::named("NSCompoundPredicate") == nullptr ||
      _searchPredicate->searchFolder == nullptr) {
    scheduleEnd(delayOfRefusal);
    return;
  }
  _defaultPath = _searchPredicate->searchFolder;
  if (_searchPredicate->isAndSearch == 0 && hasContentCondition())
    startContentWalk();
  // Without memory for the query it counts as one that refuses to start.
  bool isPosed = false;
  tryTwice([&] { isPosed = poseQuery(); });
  if (!isPosed)
    distribution_.takeEnd();
}

bool SearchEngine::poseQuery() {
  Predicates all = conditions(*_searchPredicate);
  if (!all.empty() || _searchPredicate->isAndSearch != 0)
    return startQuery(std::move(all));
  if (_isSearching == 0)
    return false;
  // The walk alone decides: the query counts as finished.
  distribution_.countEnd();
  return true;
}

bool SearchEngine::startQuery(Predicates all) {
  if (!_metaQuery)
    return false;
  const bool mustMeetAll = _searchPredicate->isAndSearch != 0;
  Predicate predicate = typePredicate(*this, mustMeetAll);
  if (!all.empty())
    predicate = NSCompoundPredicate::andPredicateWithSubpredicates(
        {predicate, joined(std::move(all), mustMeetAll)});
  _metaQuery->setSearchScopes(NSArray::create({Ref<const NSObject>(_defaultPath)}));
  _metaQuery->setPredicate(std::move(predicate));
  if (_metaQuery->startQuery() != 1)
    return false;
  _isSearching = _isSearchSpotlight = 1;
  return true;
}

void SearchEngine::getSpotlightResult(const NSNotification *notification) noexcept {
  if (!isOfAnotherQuery(notification))
    picUpResultData();
}

void SearchEngine::picUpResultData() noexcept {
  if (!_metaQuery || _searchPredicate == nullptr)
    return;
  // The host's callback may run the main loop, and so end the search.
  const Ref<SearchEngine> self(this);
  // If memory is short, the next notification tries again.
  tryTwice([&] {
    const std::string base = _isCheckSubFolder == 0 ? baseFolder() : std::string();
    while (static_cast<std::size_t>(_resultCheckCount) < _metaQuery->resultCount()) {
      const Ref<const NSMetadataItem> item =
          _metaQuery->resultAtIndex(static_cast<std::size_t>(_resultCheckCount));
      const Ref<const NSObject> value = item->valueForAttribute("kMDItemPath");
      const auto *const path = dynamic_cast<const NSString *>(value.get());
      const bool isWanted = path != nullptr && (_isCheckSubFolder != 0 ||
                                                pathWithoutLastComponent(path->view()) == base);
      // Counted before the callback, which may lead back here.
      ++_resultCheckCount;
      if (isWanted)
        distribution_.takeFound(Ref<const NSString>(path));
    }
  });
}

void SearchEngine::stopSpotlight(const NSNotification *notification) noexcept {
  if (isOfAnotherQuery(notification))
    return;
  const Ref<SearchEngine> self(this);
  if (_metaQuery)
    _metaQuery->stopQuery();
  picUpResultData();
  _isSearchSpotlight = 0;
  if (std::exchange(_isStopSpotligth, 1) == 0)
    distribution_.takeEnd();
}

void SearchEngine::stopQuery() noexcept {
  if (_isSearchSpotlight != 0)
    stopSpotlight(nullptr);
}

bool SearchEngine::isOfAnotherQuery(const NSNotification *notification) const noexcept {
  return notification != nullptr && notification->object != _metaQuery.get();
}

std::string SearchEngine::baseFolder() const {
  constexpr std::string_view blanks = " \t";
  std::string_view path = _defaultPath->view();
  path.remove_prefix(std::min(path.find_first_not_of(blanks), path.size()));
  path = path.substr(0, path.find_last_not_of(blanks) + 1);
  const std::string folder(path);
  return resolvedPath(folder).value_or(folder);
}

} // namespace searchsystem
