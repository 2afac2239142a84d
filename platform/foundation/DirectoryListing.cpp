#include "platform/foundation/DirectoryListing.h"

#include "platform/foundation/PathComponents.h"
#include "platform/foundation/SystemCalls.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace searchsystem {

namespace {

constexpr std::size_t bufferSize = std::size_t{32} << 10;

FileKind kindOfEntryType(unsigned char type) noexcept {
  switch (type) {
  case DT_UNKNOWN:
    return FileKind::Unknown;
  case DT_REG:
    return FileKind::Regular;
  case DT_DIR:
    return FileKind::Folder;
  case DT_LNK:
    return FileKind::Link;
  default:
    return FileKind::Other;
  }
}

} // namespace

bool DirectoryListing::mayBeMountPoint(std::string_view name) noexcept {
  if (!mountPoints_)
    mountPoints_ = MountPoints::recent();
  return *mountPoints_ == nullptr || (*mountPoints_)->haveName(name);
}

std::optional<DirectoryListing> DirectoryListing::open(std::string_view path) {
  if (path.empty())
    return std::nullopt;
  DirectoryListing listing;
  listing.buffer_ = std::make_unique_for_overwrite<std::byte[]>(bufferSize);
  listing.pathLength_ = pathWithoutTrailingSlashes(path).size();
  constexpr int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  const auto openFolder = [](const std::string &name) {
    return FileDescriptor(uninterrupted(&SystemCalls::openAt, currentFolder, name.c_str(), flags));
  };
  // Opening its "." enters the folder, which shows whether its entries can be reached.
  std::string name;
  name.reserve(path.size() + 2);
  name.append(path).append("/.");
  listing.descriptor_ = openFolder(name);
  if (!listing.descriptor_ && (errno == EACCES || errno == ENAMETOOLONG)) {
    name.resize(path.size());
    listing.descriptor_ = openFolder(name);
    listing.canReachEntries_ =
        listing.descriptor_ && fileStatus(listing.descriptor(), ".", FollowLink::Yes);
  }
  if (!listing.descriptor_)
    return std::nullopt;
  return listing;
}

std::optional<std::string_view> DirectoryListing::nextRegularFile() const noexcept {
  if (position_ == filled_)
    return std::nullopt;
  const auto *entry = reinterpret_cast<const dirent64 *>(buffer_.get() + position_);
  return entry->d_type == DT_REG ? std::optional<std::string_view>(entry->d_name) : std::nullopt;
}

bool DirectoryListing::fill() noexcept {
  const ssize_t size =
      uninterrupted(&SystemCalls::listEntries, descriptor(), buffer_.get(), bufferSize);
  hasBrokenOff_ = size < 0;
  if (size <= 0)
    return false;
  position_ = 0;
  filled_ = static_cast<std::size_t>(size);
  return true;
}

DirectoryEntry DirectoryListing::takeEntry() noexcept {
  const auto *entry = reinterpret_cast<const dirent64 *>(buffer_.get() + position_);
  position_ += entry->d_reclen;
  return {entry->d_name, kindOfEntryType(entry->d_type)};
}

bool DirectoryListing::mayHoldNameEndingIn(std::string_view ending) noexcept {
  int fillings = 0;
  bool isFound = false;
  for (; !isFound && fill(); ++fillings) {
    while (!isFound && position_ < filled_) {
      const std::string_view name = takeEntry().name;
      isFound = name.size() >= ending.size() &&
                equalIgnoringASCIICase(name.substr(name.size() - ending.size()), ending);
    }
  }
  isFound |= hasBrokenOff_;
  position_ = 0;
  // What fits into the buffer need not be read again.
  if (fillings > 1 || hasBrokenOff_) {
    filled_ = 0;
    lseek(descriptor(), 0, SEEK_SET);
  }
  return isFound;
}

std::optional<DirectoryEntry> DirectoryListing::next() noexcept {
  for (;;) {
    if (position_ == filled_ && !fill())
      return std::nullopt;
    const DirectoryEntry entry = takeEntry();
    if (entry.name != "." && entry.name != "..")
      return entry;
  }
}

} // namespace searchsystem
