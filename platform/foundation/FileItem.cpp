#include "platform/foundation/FileItem.h"

#include "platform/foundation/PathComponents.h"
#include "platform/foundation/SystemCalls.h"

#include <array>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace {

/// Should another kind of thing have come into the place of a regular file, nobody waits for that.
constexpr int readingFlags = O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;

} // namespace

FileItem::FileItem(const NSString &path) noexcept
    : listing_(nullptr), folder_(currentFolder), path_(path.UTF8String()),
      name_(lastPathComponent(path.view())), listedKind_(FileKind::Unknown), isNameable_(true) {}

bool FileItem::isListedAsPlainFolder() noexcept {
  if (!isPlainFolder_)
    isPlainFolder_ = listedKind_ == FileKind::Folder && isNameable_ &&
                     listing_->canReachEntries() && !listing_->mayBeMountPoint(name_);
  return *isPlainFolder_;
}

FileItem::Existence FileItem::existence() noexcept {
  if (!isNameable_)
    return Existence::None;
  switch (listedKind_) {
  case FileKind::Regular:
  case FileKind::Other:
    return listing_->canReachEntries() ? Existence::File : Existence::None;
  case FileKind::Folder:
    return isListedAsPlainFolder() || status() ? Existence::Folder : Existence::None;
  case FileKind::Unknown:
  case FileKind::Link:
    break;
  }
  const std::optional<FileStatus> target = fileStatus(folder_, path_, FollowLink::Yes);
  if (!target)
    return Existence::None;
  return target->kind == FileKind::Folder ? Existence::Folder : Existence::File;
}

const std::optional<FileStatus> &FileItem::status() noexcept {
  if (!isExamined_) {
    isExamined_ = true;
    if (isNameable_)
      status_ = fileStatus(folder_, path_, FollowLink::No);
  }
  return status_;
}

bool FileItem::holds(std::string_view path) const {
  const std::string inside = std::string(path_).append(path);
  return isNameable_ && fileStatus(folder_, inside.c_str(), FollowLink::Yes).has_value();
}

int FileItem::openRegularFile() noexcept {
  if (!isExamined_ && listedKind_ == FileKind::Regular)
    return openAndExamine();
  if (!status())
    return -1;
  const bool isLink = status_->kind == FileKind::Link;
  const std::optional<FileStatus> target =
      isLink ? fileStatus(folder_, path_, FollowLink::Yes) : status_;
  if (!target || target->kind != FileKind::Regular)
    return -1;
  return uninterrupted(&SystemCalls::openAt, folder_, path_,
                       isLink ? readingFlags : readingFlags | O_NOFOLLOW);
}

int FileItem::openAndExamine() noexcept {
  if (!isNameable_)
    return -1;
  const int file = uninterrupted(&SystemCalls::openAt, folder_, path_, readingFlags | O_NOFOLLOW);
  if (file < 0)
    return -1;
  // The status of an open file is had for much less than that of a name.
  const std::optional<FileStatus> status = fileStatus(file);
  if (!status || status->kind != FileKind::Regular) {
    close(file);
    return -1;
  }
  isExamined_ = true;
  status_ = status;
  return file;
}

bool FileItem::isBookmarkFile() noexcept {
  if (!status() || status_->kind != FileKind::Regular)
    return false;
  const int file = openRegularFile();
  if (file < 0)
    return false;
  // "book", the size of what follows or zero, "mark".
  std::array<char, 12> header{};
  const std::size_t size = readFully(file, header.data(), header.size());
  close(file);
  return size == header.size() && std::memcmp(header.data(), "book", 4) == 0 &&
         std::memcmp(header.data() + 8, "mark", 4) == 0;
}
