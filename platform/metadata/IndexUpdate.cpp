#include "platform/metadata/IndexUpdate.h"

#include "platform/foundation/SystemCalls.h"
#include "platform/metadata/IndexMerge.h"

#include <algorithm>
#include <fcntl.h>
#include <optional>
#include <sys/file.h>
#include <utility>
#include <vector>

namespace searchsystem {

namespace {

/// A smaller index is made anew with each change, a larger one when a quarter of it has changed, or
/// many queries have appended to it.
constexpr std::uint64_t smallSize = std::uint64_t{64} << 10;
constexpr std::uint64_t partThatMayChange = 4;
constexpr std::size_t mostSegments = 24;

/// A larger index is begun anew: most of its folders must be gone.
constexpr std::uint64_t mostBytes = std::uint64_t{1} << 30;

/// A record that no query has found true for this long is dropped when the index is made anew.
constexpr int mostDays = 90;

/// Makes a file of that name, which did not exist; what was left of an earlier one is removed.
FileDescriptor makeFile(const std::string &path) noexcept {
  uninterrupted(&SystemCalls::removeFile, path.c_str());
  return openOwnFile(path, O_RDWR | O_CREAT | O_EXCL);
}

} // namespace

std::unique_ptr<IndexUpdate> IndexUpdate::begin(const IndexPlace &place) {
  using Finding = IndexPlace::Finding;
  const Finding finding = place.look();
  if (finding == Finding::Impossible || !place.makeFolder())
    return nullptr;
  FileDescriptor lock = openOwnFile(place.lockFile(), O_RDWR | O_CREAT);
  if (!lock || uninterrupted(&SystemCalls::lockFile, lock.number(), LOCK_EX | LOCK_NB) != 0)
    return nullptr;
  std::unique_ptr<IndexUpdate> update(new IndexUpdate(place, std::move(lock)));
  if (finding == Finding::Usable)
    if (FileDescriptor file = openOwnFile(place.file(), O_RDWR))
      update->index_ = IndexFile::read(std::move(file));
  if (update->index_ && update->index_->size() > mostBytes)
    update->index_ = nullptr;
  return update;
}

IndexUpdate::~IndexUpdate() {
  // A child of the process may have the descriptor, too.
  uninterrupted(&SystemCalls::lockFile, lock_.number(), LOCK_UN);
}

bool IndexUpdate::putAside(const RecordBatch &batch) {
  if (!parts_) {
    const std::string path = place_.partsFile();
    parts_ = makeFile(path);
    uninterrupted(&SystemCalls::removeFile, path.c_str());
  }
  if (!parts_ || !hasRoomFor(batch.size(), parts_.number()))
    return false;
  IndexSegmentWriter segment(parts_.number(), endOfParts_);
  const std::optional<std::uint64_t> end = batch.writeTo(segment) ? segment.finish() : std::nullopt;
  endOfParts_ = end.value_or(endOfParts_);
  return end.has_value();
}

bool IndexUpdate::finish(const RecordBatch &batch, bool isBroken) {
  return index_ && !isBroken && !parts_ && isSmallChange(batch) ? append(batch) : makeAnew(batch);
}

bool IndexUpdate::isSmallChange(const RecordBatch &batch) const noexcept {
  const std::vector<IndexSegment> &segments = index_->segments();
  const IndexSegment &first = segments.front();
  std::uint64_t records = batch.count();
  for (const IndexSegment &segment : segments)
    records += segment.records;
  return index_->end() > smallSize && segments.size() < mostSegments &&
         index_->end() - first.end + batch.size() <= first.end / partThatMayChange &&
         records - first.records <= first.records / partThatMayChange;
}

bool IndexUpdate::append(const RecordBatch &batch) {
  const int file = index_->descriptor();
  const std::uint64_t end = index_->end();
  const auto cutOff = [&] {
    return uninterrupted(&SystemCalls::setSize, file, static_cast<off_t>(end)) == 0;
  };
  if (!hasRoomFor(batch.size(), file) || (index_->size() > end && !cutOff()))
    return false;
  try {
    IndexSegmentWriter segment(file, end);
    if (batch.writeTo(segment) && segment.finish())
      return true;
  } catch (...) {
    // As if it could not be written.
  }
  cutOff();
  return false;
}

bool IndexUpdate::makeAnew(const RecordBatch &batch) {
  if ((index_ || parts_) && !batch.isEmpty() && !putAside(batch))
    return false;
  const std::string path = place_.newFile();
  const FileDescriptor file = makeFile(path);
  if (!file)
    return false;
  bool isMade = false;
  try {
    isMade = writeAll(file.number(), batch) &&
             uninterrupted(&SystemCalls::renameFile, path.c_str(), place_.file().c_str()) == 0;
  } catch (...) {
    // As if it could not be written.
  }
  if (isMade)
    place_.removeOldFiles();
  else
    uninterrupted(&SystemCalls::removeFile, path.c_str());
  return isMade;
}

bool IndexUpdate::writeAll(int file, const RecordBatch &batch) {
  IndexSegmentWriter segment(file, 0);
  const std::uint64_t size = (index_ ? index_->end() : 0) + endOfParts_;
  if (!hasRoomFor(std::max<std::uint64_t>(size, batch.size()), file))
    return false;
  if (size == 0)
    return batch.writeTo(segment) && segment.finish();
  std::vector<std::shared_ptr<const IndexFile>> files;
  if (index_)
    files.push_back(index_);
  if (parts_) {
    files.push_back(IndexFile::read(std::move(parts_)));
    if (!files.back())
      return false;
  }
  const int firstDay = today() - mostDays;
  for (IndexMerge merge(files, ""); merge.next();)
    if (merge.record().facts().day >= firstDay && merge.record().isWhole(merge.path()) &&
        !segment.add(merge.record(), merge.path()))
      return false;
  return segment.finish().has_value();
}

} // namespace searchsystem
