#include "platform/metadata/FolderListing.h"

#include "platform/foundation/ASCIIText.h"
#include "platform/foundation/FoldedText.h"
#include "platform/foundation/NSWorkspace.h"
#include "platform/foundation/PathComponents.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace searchsystem {

namespace {

/// Whether a file system may find an entry of that name when asked for "Contents". One that ignores
/// case takes the long s for an s, and may ignore other characters.
bool mayBeContents(std::string_view name) {
  constexpr std::size_t shortest = sizeof "Content" - 1;
  if (name.size() < shortest)
    return false;
  if (isASCII(name))
    return equalIgnoringASCIICase(name, "Contents");
  std::string ascii;
  std::copy_if(name.begin(), name.end(), std::back_inserter(ascii),
               [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  return equalIgnoringASCIICase(ascii, "Contents") || equalIgnoringASCIICase(ascii, "Content");
}

} // namespace

void FolderListing::add(FileKind kind, std::string_view name) {
  if (name.starts_with('.') || (kind == FileKind::Folder && hasPackageExtension(name)))
    return;
  std::string &names = kind == FileKind::Folder          ? folders_
                       : kind == FileKind::Link          ? links_
                       : isASCII(name)                   ? files_
                       : FoldedText::holdsItsASCII(name) ? otherFiles_
                                                         : foldingFiles_;
  names.reserve(std::max(names.capacity(), names.size() + name.size() + 1));
  names.append(name).push_back('\0');
  ++(kind == FileKind::Folder ? folderCount_ : fileCount_);
  mayHoldContents_ = mayHoldContents_ || mayBeContents(name);
}

void FolderListing::clear() noexcept {
  clearFiles();
  folders_.clear();
  folderCount_ = 0;
  mayHoldContents_ = false;
}

void FolderListing::clearFiles() noexcept {
  links_.clear();
  files_.clear();
  otherFiles_.clear();
  foldingFiles_.clear();
  fileCount_ = 0;
}

FolderNames FolderListing::names() {
  std::vector<std::string_view> sorted;
  FolderNames::forEach(folders_, [&](std::string_view name) { sorted.push_back(name); });
  if (!std::is_sorted(sorted.begin(), sorted.end())) {
    std::sort(sorted.begin(), sorted.end());
    std::string folders;
    folders.reserve(folders_.size());
    for (const std::string_view name : sorted)
      folders.append(name).push_back('\0');
    folders_ = std::move(folders);
  }
  return {folders_, links_, files_, otherFiles_, foldingFiles_, mayHoldContents_};
}

} // namespace searchsystem
