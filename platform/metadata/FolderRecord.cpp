#include "platform/metadata/FolderRecord.h"

#include "platform/metadata/CheckSum.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <type_traits>

namespace searchsystem {

namespace {

/// As it lies on the disk, in the byte order of the machine.
struct Header {
  std::uint64_t sum;
  std::uint64_t owner;
  std::uint64_t inode;
  std::int64_t seconds;
  std::uint32_t nanoseconds;
  std::uint32_t listing;
  std::uint32_t folderBytes, linkBytes, fileBytes, otherFileBytes, foldingFileBytes;
  std::uint32_t entries;
  std::uint16_t partAndFlags;
  std::uint16_t day;
  /// How much of the path is that of the record before, and what follows.
  std::uint16_t pathBytesBefore, pathBytes;
};
static_assert(sizeof(Header) == FolderRecord::placeOfPath &&
              std::has_unique_object_representations_v<Header>);

static_assert(FolderRecord::mostParts <= 1 << 12);
constexpr unsigned partBits = 0xFFF, lastPartBit = 0x1000, contentsBit = 0x2000, kindShift = 14;

std::string_view bytesOf(const Header &header) noexcept {
  return {reinterpret_cast<const char *>(&header), sizeof header};
}

Header headerOf(const FolderRecord::Facts &facts, const FolderNames &names) noexcept {
  return {.sum = 0,
          .owner = facts.owner,
          .inode = facts.inode,
          .seconds = facts.changeTime.seconds,
          .nanoseconds = facts.changeTime.nanoseconds,
          .listing = facts.listing,
          .folderBytes = static_cast<std::uint32_t>(names.folders.size()),
          .linkBytes = static_cast<std::uint32_t>(names.links.size()),
          .fileBytes = static_cast<std::uint32_t>(names.files.size()),
          .otherFileBytes = static_cast<std::uint32_t>(names.otherFiles.size()),
          .foldingFileBytes = static_cast<std::uint32_t>(names.foldingFiles.size()),
          .entries = facts.entries,
          .partAndFlags =
              static_cast<std::uint16_t>(facts.part | (facts.isLastPart ? lastPartBit : 0) |
                                         (names.mayHoldContents ? contentsBit : 0) |
                                         static_cast<unsigned>(facts.kind) << kindShift),
          .day = facts.day,
          .pathBytesBefore = 0,
          .pathBytes = 0};
}

/// Of a record, however its path is divided.
std::uint64_t sumOf(Header header, std::string_view path, std::string_view allNames) noexcept {
  header.sum = 0;
  header.pathBytesBefore = header.pathBytes = 0;
  return mix(checkSum(bytesOf(header)), mix(checkSum(path), checkSum(allNames)));
}

/// Appends all of a record but the names, and makes room for these.
void append(std::string &bytes, Header header, std::string_view path, std::size_t pathBytesBefore,
            std::size_t namesSize) {
  header.pathBytesBefore = static_cast<std::uint16_t>(pathBytesBefore);
  header.pathBytes = static_cast<std::uint16_t>(path.size() - pathBytesBefore);
  const std::size_t size = bytes.size() + sizeof header + header.pathBytes + namesSize;
  if (size > bytes.capacity())
    bytes.reserve(std::max(size, 2 * bytes.capacity()));
  bytes.append(bytesOf(header)).append(path.substr(pathBytesBefore));
}

bool areWhole(std::string_view names) noexcept { return names.empty() || names.back() == '\0'; }

} // namespace

void FolderRecord::pack(std::string &bytes, std::string_view path, const Facts &facts,
                        const FolderNames &names) {
  const std::size_t begin = bytes.size();
  const std::size_t size = names.folders.size() + names.links.size() + names.files.size() +
                           names.otherFiles.size() + names.foldingFiles.size();
  Header header = headerOf(facts, names);
  append(bytes, header, path, 0, size);
  const std::size_t namesBegin = bytes.size();
  bytes.append(names.folders).append(names.links);
  bytes.append(names.files).append(names.otherFiles).append(names.foldingFiles);
  header.sum = sumOf(header, path, std::string_view(bytes).substr(namesBegin));
  std::memcpy(bytes.data() + begin, &header.sum, sizeof header.sum);
}

std::optional<FolderRecord> FolderRecord::take(std::string_view &rest, std::string &path) {
  Header header{};
  if (rest.size() < sizeof header)
    return std::nullopt;
  std::memcpy(&header, rest.data(), sizeof header);
  const std::uint64_t namesBytes = std::uint64_t{header.folderBytes} + header.linkBytes +
                                   header.fileBytes + header.otherFileBytes +
                                   header.foldingFileBytes;
  const std::uint64_t size = sizeof header + header.pathBytes + namesBytes;
  if (size > rest.size() || header.pathBytesBefore > path.size() ||
      header.pathBytesBefore + header.pathBytes > longestPath)
    return std::nullopt;
  FolderRecord record;
  record.sum_ = header.sum;
  record.facts_ = {.kind = static_cast<Kind>(header.partAndFlags >> kindShift),
                   .isLastPart = (header.partAndFlags & lastPartBit) != 0,
                   .part = static_cast<std::uint16_t>(header.partAndFlags & partBits),
                   .day = header.day,
                   .listing = header.listing,
                   .entries = header.entries,
                   .owner = header.owner,
                   .inode = header.inode,
                   .changeTime = {header.seconds, header.nanoseconds}};
  path.resize(header.pathBytesBefore);
  path.append(rest.substr(sizeof header, header.pathBytes));
  record.allNames_ = rest.substr(sizeof header + header.pathBytes, namesBytes);
  std::string_view left = record.allNames_;
  const auto takeNames = [&](std::size_t bytes) {
    const std::string_view names = left.substr(0, bytes);
    left.remove_prefix(bytes);
    return names;
  };
  record.names_.folders = takeNames(header.folderBytes);
  record.names_.links = takeNames(header.linkBytes);
  record.names_.files = takeNames(header.fileBytes);
  record.names_.otherFiles = takeNames(header.otherFileBytes);
  record.names_.foldingFiles = takeNames(header.foldingFileBytes);
  record.names_.mayHoldContents = (header.partAndFlags & contentsBit) != 0;
  rest.remove_prefix(size);
  return record;
}

void FolderRecord::appendTo(std::string &bytes, std::string_view path,
                            std::string_view before) const {
  const auto [differs, other] =
      std::mismatch(path.begin(), path.end(), before.begin(), before.end());
  Header header = headerOf(facts_, names_);
  header.sum = sum_;
  append(bytes, header, path, static_cast<std::size_t>(differs - path.begin()), allNames_.size());
  bytes.append(allNames_);
}

bool FolderRecord::isWhole(std::string_view path) const noexcept {
  return sum_ == sumOf(headerOf(facts_, names_), path, allNames_) && areWhole(names_.folders) &&
         areWhole(names_.links) && areWhole(names_.files) && areWhole(names_.otherFiles) &&
         areWhole(names_.foldingFiles);
}

std::uint16_t today() noexcept {
  using namespace std::chrono;
  const auto days = duration_cast<duration<std::int64_t, std::ratio<86400>>>(
      system_clock::now().time_since_epoch());
  return static_cast<std::uint16_t>(std::clamp<std::int64_t>(days.count(), 0, UINT16_MAX));
}

} // namespace searchsystem
