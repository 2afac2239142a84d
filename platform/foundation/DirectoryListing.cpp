#include "platform/foundation/DirectoryListing.h"

#include "platform/foundation/PathComponents.h"
#include "platform/foundation/SystemCalls.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <utility>

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

DirectoryListing::DirectoryListing(int descriptor, std::size_t pathLength, bool canReachEntries,
                                   std::unique_ptr<std::byte[]> buffer) noexcept
    : descriptor_(descriptor), pathLength_(pathLength), canReachEntries_(canReachEntries),
      buffer_(std::move(buffer)) {}

DirectoryListing::DirectoryListing(DirectoryListing &&other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), pathLength_(other.pathLength_),
      canReachEntries_(other.canReachEntries_), buffer_(std::move(other.buffer_)),
      position_(other.position_), filled_(other.filled_),
      mountPoints_(std::move(other.mountPoints_)), hasBrokenOff_(other.hasBrokenOff_) {}

bool DirectoryListing::mayBeMountPoint(std::string_view name) noexcept {
  if (!mountPoints_)
    mountPoints_ = MountPoints::recent();
  return *mountPoints_ == nullptr || (*mountPoints_)->haveName(name);
}

DirectoryListing::~DirectoryListing() {
  if (descriptor_ >= 0)
    close(descriptor_);
}

std::optional<DirectoryListing> DirectoryListing::open(std::string_view path) {
  if (path.empty())
    return std::nullopt;
  auto buffer = std::make_unique_for_overwrite<std::byte[]>(bufferSize);
  constexpr int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  const auto openFolder = [](const std::string &name) {
    return uninterrupted(&SystemCalls::openAt, currentFolder, name.c_str(), flags);
  };
  // To open its "." a folder must be entered, so that this tells whether its entries can be
  // reached.
  std::string name;
  name.reserve(path.size() + 2);
  name.append(path).append("/.");
  int descriptor = openFolder(name);
  bool canReachEntries = descriptor >= 0;
  if (descriptor < 0 && (errno == EACCES || errno == ENAMETOOLONG)) {
    name.resize(path.size());
    descriptor = openFolder(name);
    canReachEntries = descriptor >= 0 && fileStatus(descriptor, ".", FollowLink::Yes).has_value();
  }
  if (descriptor < 0)
    return std::nullopt;
  return DirectoryListing(descriptor, pathWithoutTrailingSlashes(path).size(), canReachEntries,
                          std::move(buffer));
}

std::optional<std::string_view> DirectoryListing::nextRegularFile() const noexcept {
  if (position_ == filled_)
    return std::nullopt;
  const auto *entry = reinterpret_cast<const dirent64 *>(buffer_.get() + position_);
  return entry->d_type == DT_REG ? std::optional<std::string_view>(entry->d_name) : std::nullopt;
}

std::optional<DirectoryEntry> DirectoryListing::next() noexcept {
  for (;;) {
    if (position_ == filled_) {
      const ssize_t size =
          uninterrupted(&SystemCalls::listEntries, descriptor_, buffer_.get(), bufferSize);
      hasBrokenOff_ = size < 0;
      if (size <= 0)
        return std::nullopt;
      position_ = 0;
      filled_ = static_cast<std::size_t>(size);
    }
    const auto *entry = reinterpret_cast<const dirent64 *>(buffer_.get() + position_);
    position_ += entry->d_reclen;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..")
      return DirectoryEntry{name, kindOfEntryType(entry->d_type)};
  }
}
