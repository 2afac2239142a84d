#include "platform/foundation/FileItem.h"

#include "platform/foundation/PathComponents.h"
#include "platform/foundation/SystemCalls.h"

#include <array>
#include <cstring>
#include <fcntl.h>
#include <string>

namespace searchsystem {

namespace {

/// Opening does not block if something else has replaced the regular file.
constexpr int readingFlags = O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;

} // namespace

FileItem::FileItem(const NSString &path, FileKind listedKind) noexcept
    : listing_(nullptr), folder_(currentFolder), path_(path.UTF8String()),
      name_(lastPathComponent(path.view())), listedKind_(listedKind), isNameable_(true) {}

bool FileItem::isListedAsPlainFolder() noexcept {
  if (!isPlainFolder_)
    isPlainFolder_ = listedKind_ == FileKind::Folder && isNameable_ && listing_ != nullptr &&
                     listing_->canReachEntries() && !listing_->mayBeMountPoint(name_);
  return *isPlainFolder_;
}

FileItem::Existence FileItem::existence() noexcept {
  if (!isNameable_)
    return Existence::None;
  switch (listedKind_) {
  case FileKind::Regular:
  case FileKind::Other:
    return listing_ == nullptr || listing_->canReachEntries() ? Existence::File : Existence::None;
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

FileDescriptor FileItem::openRegularFile() noexcept {
  if (!isExamined_ && listedKind_ == FileKind::Regular)
    return openAndExamine();
  if (!status())
    return FileDescriptor();
  const bool isLink = status_->kind == FileKind::Link;
  const std::optional<FileStatus> target =
      isLink ? fileStatus(folder_, path_, FollowLink::Yes) : status_;
  if (!target || target->kind != FileKind::Regular)
    return FileDescriptor();
  return FileDescriptor(uninterrupted(&SystemCalls::openAt, folder_, path_,
                                      isLink ? readingFlags : readingFlags | O_NOFOLLOW));
}

FileDescriptor FileItem::openAndExamine() noexcept {
  if (!isNameable_)
    return FileDescriptor();
  FileDescriptor file(
      uninterrupted(&SystemCalls::openAt, folder_, path_, readingFlags | O_NOFOLLOW));
  if (!file)
    return file;
  // The status of an open file costs much less than that of a name.
  const std::optional<FileStatus> status = fileStatus(file.number());
  if (!status || status->kind != FileKind::Regular)
    return FileDescriptor();
  isExamined_ = true;
  status_ = status;
  return file;
}

bool FileItem::isBookmarkFile() noexcept {
  if (!status() || status_->kind != FileKind::Regular)
    return false;
  const FileDescriptor file = openRegularFile();
  if (!file)
    return false;
  // "book", the size of what follows or zero, "mark".
  std::array<char, 12> header{};
  return readFully(file.number(), header.data(), header.size()) == header.size() &&
         std::memcmp(header.data(), "book", 4) == 0 &&
         std::memcmp(header.data() + 8, "mark", 4) == 0;
}

} // namespace searchsystem
