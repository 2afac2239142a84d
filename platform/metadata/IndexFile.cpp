#include "platform/metadata/IndexFile.h"

#include "platform/foundation/SystemCalls.h"
#include "platform/metadata/CheckSum.h"

#include <fcntl.h>
#include <type_traits>
#include <utility>

namespace searchsystem {

namespace {

struct Header {
  std::uint64_t form;
  std::uint64_t sum;
  std::uint64_t records;
  std::uint64_t recordBytes;
  std::uint64_t groups;
  std::uint64_t sumOfTable;
};
static_assert(std::has_unique_object_representations_v<Header>);

/// "folders2" as a number; the next form is another.
constexpr std::uint64_t form = 0x32737265646C6F66;

/// A group is searched from its beginning.
constexpr std::size_t recordsInGroup = 32;
constexpr std::size_t bytesInGroup = std::size_t{32} << 10;
constexpr std::size_t mostBytesInGroup = bytesInGroup + FolderRecord::mostBytes;

/// What comes after this many segments is left out.
constexpr std::size_t mostSegments = 4096;

/// How much is written at a time.
constexpr std::size_t bytesAtOnce = std::size_t{256} << 10;

std::uint64_t sumOf(Header header) noexcept {
  header.sum = 0;
  return checkSum({reinterpret_cast<const char *>(&header), sizeof header});
}

std::string_view bytesOf(const std::vector<std::uint64_t> &table) noexcept {
  return {reinterpret_cast<const char *>(table.data()), table.size() * sizeof table[0]};
}

/// The segment at `begin` of a file of that size; none unless it is whole but for its records.
std::optional<IndexSegment> segmentAt(int file, std::uint64_t begin, std::uint64_t size) {
  Header header{};
  std::uint64_t left = size - begin;
  if (left < sizeof header || !readFullyAt(file, &header, sizeof header, begin) ||
      header.form != form || header.sum != sumOf(header))
    return std::nullopt;
  left -= sizeof header;
  if (header.recordBytes > left || header.groups > (left - header.recordBytes) / sizeof(begin))
    return std::nullopt;
  IndexSegment segment{.begin = begin, .records = header.records};
  segment.groups.resize(header.groups + 1);
  const std::uint64_t first = begin + sizeof header, table = first + header.recordBytes;
  segment.end = table + header.groups * sizeof(begin);
  if (!readFullyAt(file, segment.groups.data(), header.groups * sizeof(begin), table))
    return std::nullopt;
  segment.groups.back() = header.recordBytes;
  if (header.sumOfTable != checkSum(bytesOf(segment.groups)))
    return std::nullopt;
  std::uint64_t before = 0;
  for (std::uint64_t &group : segment.groups) {
    if (group < before || group - before > mostBytesInGroup || group > header.recordBytes)
      return std::nullopt;
    before = group;
    group += first;
  }
  return segment.groups.front() == first ? std::optional(std::move(segment)) : std::nullopt;
}

} // namespace

std::shared_ptr<const IndexFile> IndexFile::open(const IndexPlace &place, bool &isBroken) {
  isBroken = false;
  const IndexPlace::Finding finding = place.look();
  isBroken = finding == IndexPlace::Finding::Untrusted;
  if (finding != IndexPlace::Finding::Usable)
    return nullptr;
  FileDescriptor file = openOwnFile(place.file(), O_RDONLY);
  if (!file)
    return nullptr;
  std::shared_ptr<const IndexFile> index = read(std::move(file));
  isBroken = index == nullptr;
  return index;
}

std::shared_ptr<const IndexFile> IndexFile::read(FileDescriptor file) {
  const std::optional<FileStatus> status = fileStatus(file.number());
  if (!status)
    return nullptr;
  std::shared_ptr<IndexFile> index(new IndexFile);
  index->size_ = status->size;
  while (index->segments_.size() < mostSegments)
    if (std::optional<IndexSegment> next = segmentAt(file.number(), index->end(), status->size))
      index->segments_.push_back(*std::move(next));
    else
      break;
  index->file_ = std::move(file);
  return index->segments_.empty() ? nullptr : index;
}

bool IndexSegmentWriter::add(const FolderRecord &record, std::string_view path) {
  if (groups_.empty() || recordsInGroup_ == recordsInGroup ||
      buffer_.size() - groupBegin_ >= bytesInGroup) {
    if (buffer_.size() >= bytesAtOnce && !flush())
      return false;
    groupBegin_ = buffer_.size();
    groups_.push_back(written_ + groupBegin_);
    recordsInGroup_ = 0;
    lastPath_.clear();
  }
  record.appendTo(buffer_, path, lastPath_);
  lastPath_ = path;
  ++recordsInGroup_;
  ++records_;
  return true;
}

bool IndexSegmentWriter::flush() noexcept {
  if (!writeFullyAt(file_, buffer_.data(), buffer_.size(), begin_ + sizeof(Header) + written_))
    return false;
  written_ += buffer_.size();
  buffer_.clear();
  return true;
}

std::optional<std::uint64_t> IndexSegmentWriter::finish() {
  if (!flush())
    return std::nullopt;
  const std::uint64_t table = begin_ + sizeof(Header) + written_;
  Header header{.form = form,
                .sum = 0,
                .records = records_,
                .recordBytes = written_,
                .groups = groups_.size(),
                .sumOfTable = 0};
  groups_.push_back(written_);
  header.sumOfTable = checkSum(bytesOf(groups_));
  header.sum = sumOf(header);
  const std::uint64_t size = header.groups * sizeof table;
  if (!writeFullyAt(file_, groups_.data(), size, table) ||
      !writeFullyAt(file_, &header, sizeof header, begin_))
    return std::nullopt;
  return table + size;
}

} // namespace searchsystem
