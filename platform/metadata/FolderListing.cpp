#include "platform/metadata/FolderListing.h"

#include "platform/foundation/PathComponents.h"

#include <algorithm>

namespace {

/// A file system that does not tell upper from lower case may have letters of its own to compare.
bool mayBeContents(std::string_view name) noexcept {
  const auto isNotASCII = [](char c) { return static_cast<unsigned char>(c) >= 0x80; };
  return equalIgnoringASCIICase(name, "Contents") ||
         std::any_of(name.begin(), name.end(), isNotASCII);
}

} // namespace

void FolderListing::add(FileKind kind, std::string_view name) {
  std::string &names = kind == FileKind::Folder ? folders_
                       : kind == FileKind::Link ? links_
                                                : files_;
  names.reserve(std::max(names.capacity(), names.size() + name.size() + 1));
  names.append(name).push_back('\0');
  ++count_;
  mayHoldContents_ = mayHoldContents_ || mayBeContents(name);
}

void FolderListing::clear() noexcept {
  for (std::string *const names : {&folders_, &files_, &links_})
    names->clear();
  count_ = 0;
  mayHoldContents_ = false;
}
