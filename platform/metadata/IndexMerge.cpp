#include "platform/metadata/IndexMerge.h"

#include "platform/foundation/SystemCalls.h"
#include "platform/metadata/FolderPath.h"

#include <algorithm>
#include <utility>

namespace searchsystem {

namespace {

constexpr std::size_t bytesInPiece = std::size_t{64} << 10;

/// Twice as many each time up to this: a small scope reads no more than it needs.
constexpr std::size_t mostGroupsInPiece = 16;

} // namespace

/// The records of one segment that belong to a folder and everything below it.
class IndexMerge::Run {
public:
  Run(std::shared_ptr<const IndexFile> file, const IndexSegment &segment, std::size_t age)
      : age_(age), file_(std::move(file)), groups_(segment.groups) {}

  /// Steps to the first record in the tree of `folder`; false if there is none.
  [[nodiscard]] bool seek(std::string_view folder) {
    if (!folder.empty())
      nextGroup_ = loadedEnd_ = groupBefore(folder);
    do {
      if (!step())
        return false;
    } while (FolderPath::compare(path_, folder) < 0);
    return isStillIn(folder);
  }

  /// Steps to the next record in the tree of `folder`; false if there is none.
  [[nodiscard]] bool next(std::string_view folder) { return step() && isStillIn(folder); }

  /// Whether its record comes before that of another.
  [[nodiscard]] bool isBefore(const Run &other) const noexcept {
    const int order = FolderPath::compare(path_, other.path_);
    const unsigned part = record_->facts().part, otherPart = other.record_->facts().part;
    return order != 0 ? order < 0 : part != otherPart ? part < otherPart : age_ > other.age_;
  }

  [[nodiscard]] const FolderRecord &record() const noexcept { return *record_; }
  [[nodiscard]] const std::string &path() const noexcept { return path_; }
  [[nodiscard]] const std::shared_ptr<const char[]> &piece() const noexcept { return piece_; }
  [[nodiscard]] std::size_t age() const noexcept { return age_; }
  [[nodiscard]] bool isBroken() const noexcept { return isBroken_; }

private:
  [[nodiscard]] std::size_t groupCount() const noexcept { return groups_.size() - 1; }

  /// The last group whose first record comes before `folder`, else the first one.
  [[nodiscard]] std::size_t groupBefore(std::string_view folder) {
    std::size_t first = 0, count = groupCount();
    while (count > 1) {
      const std::size_t half = count / 2;
      nextGroup_ = loadedEnd_ = first + half;
      groupsInPiece_ = 1;
      rest_ = {};
      // Where a damaged group is met, what cannot be found is listed anew.
      const bool isWhole = step() && record_->isWhole(path_);
      isBroken_ = isBroken_ || !isWhole;
      if (isWhole && FolderPath::compare(path_, folder) < 0)
        first += half;
      count = isWhole && FolderPath::compare(path_, folder) < 0 ? count - half : half;
    }
    rest_ = {};
    return first;
  }

  [[nodiscard]] bool step() {
    for (;;) {
      if (rest_.empty() && !beginGroup())
        return false;
      record_ = FolderRecord::take(rest_, path_);
      if (record_)
        return true;
      // What is left of a damaged group is not known.
      isBroken_ = true;
      rest_ = {};
    }
  }

  [[nodiscard]] bool beginGroup() {
    if (nextGroup_ == groupCount() || (nextGroup_ == loadedEnd_ && !load()))
      return false;
    const std::uint64_t begin = groups_[nextGroup_] - pieceBegin_;
    const std::uint64_t size = groups_[nextGroup_ + 1] - groups_[nextGroup_];
    rest_ = std::string_view(piece_.get() + begin, size);
    path_.clear();
    ++nextGroup_;
    return true;
  }

  [[nodiscard]] bool load() {
    pieceBegin_ = groups_[nextGroup_];
    const std::size_t end = std::min(nextGroup_ + groupsInPiece_, groupCount());
    loadedEnd_ = nextGroup_ + 1;
    while (loadedEnd_ < end && groups_[loadedEnd_ + 1] - pieceBegin_ <= bytesInPiece)
      ++loadedEnd_;
    groupsInPiece_ = std::min(2 * groupsInPiece_, mostGroupsInPiece);
    const std::size_t size = groups_[loadedEnd_] - pieceBegin_;
    std::shared_ptr<char[]> piece = std::make_shared_for_overwrite<char[]>(size);
    const bool isRead = readFullyAt(file_->descriptor(), piece.get(), size, pieceBegin_);
    piece_ = std::move(piece);
    isBroken_ = isBroken_ || !isRead;
    return isRead;
  }

  /// A path that leads out of the tree ends the run, unless it is damaged.
  [[nodiscard]] bool isStillIn(std::string_view folder) {
    while (!FolderPath::isInTree(path_, folder)) {
      if (record_->isWhole(path_))
        return false;
      isBroken_ = true;
      if (!step())
        return false;
    }
    return true;
  }

  const std::size_t age_;
  const std::shared_ptr<const IndexFile> file_;
  const std::vector<std::uint64_t> &groups_;
  std::size_t nextGroup_ = 0, loadedEnd_ = 0, groupsInPiece_ = 1;
  std::shared_ptr<const char[]> piece_;
  std::uint64_t pieceBegin_ = 0;
  /// Of the group at hand.
  std::string_view rest_;
  std::optional<FolderRecord> record_;
  std::string path_;
  bool isBroken_ = false;
};

IndexMerge::IndexMerge(const std::vector<std::shared_ptr<const IndexFile>> &files,
                       std::string_view folder)
    : folder_(folder) {
  for (const std::shared_ptr<const IndexFile> &file : files)
    for (const IndexSegment &segment : file->segments()) {
      runs_.push_back(std::make_unique<Run>(file, segment, age_++));
      keep(runs_.back()->seek(folder_));
    }
}

IndexMerge::~IndexMerge() = default;

void IndexMerge::keep(bool hasRecord) noexcept {
  isBroken_ = isBroken_ || runs_.back()->isBroken();
  if (!hasRecord) {
    runs_.pop_back();
    return;
  }
  for (std::size_t i = runs_.size() - 1; i > 0 && runs_[i - 1]->isBefore(*runs_[i]); --i)
    runs_[i - 1].swap(runs_[i]);
}

bool IndexMerge::next() {
  for (;;) {
    if (std::exchange(isBegun_, true))
      keep(runs_.back()->next(folder_));
    if (runs_.empty())
      return false;
    const FolderRecord::Facts &facts = record().facts();
    if (!listing_ || listedPath_ != path()) {
      listedPath_ = path();
      nextPart_ = 0;
      const auto others = std::find_if(runs_.rbegin(), runs_.rend(),
                                       [&](const auto &run) { return run->path() != listedPath_; });
      listing_ =
          (*std::max_element(runs_.rbegin(), others,
                             [](const auto &a, const auto &b) { return a->age() < b->age(); }))
              ->record()
              .facts()
              .listing;
    }
    // A part may have been renewed: the newest comes first.
    if (facts.listing != *listing_ || facts.part < nextPart_)
      continue;
    nextPart_ = facts.part + 1U;
    if (facts.kind != FolderRecord::Kind::Gone)
      return true;
  }
}

const FolderRecord &IndexMerge::record() const noexcept { return runs_.back()->record(); }
const std::string &IndexMerge::path() const noexcept { return runs_.back()->path(); }
const std::shared_ptr<const char[]> &IndexMerge::piece() const noexcept {
  return runs_.back()->piece();
}

} // namespace searchsystem
