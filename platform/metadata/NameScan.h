#pragma once

#include "platform/foundation/TextPattern.h"
#include "platform/metadata/FolderListing.h"

#include <string_view>

namespace searchsystem {

/// Calls `look` with each of `names`, a NUL behind each, in which the bytes of `text` occur.
template <class Look>
void forEachNameWithBytes(std::string_view names, const TextPattern &text, Look look) {
  for (;;) {
    const NSRange found = text.findBytes(names);
    if (found.length == 0)
      return;
    const std::size_t before = names.rfind('\0', found.location);
    const std::size_t begin = before == std::string_view::npos ? 0 : before + 1;
    const std::size_t end = names.find('\0', begin);
    look(names.substr(begin, end - begin));
    names.remove_prefix(end + 1);
  }
}

/// Calls `look` with each name of a file in a folder that may hold `text`, with all if that is
/// null. Names with characters that become others in the comparison may always hold it.
template <class Look>
void forEachName(const FolderNames &names, const TextPattern *text, Look look) {
  const auto scan = [&](std::string_view block, bool mayHoldText, bool isFoundByBytes) {
    if (isFoundByBytes)
      forEachNameWithBytes(block, *text, look);
    else if (mayHoldText)
      FolderNames::forEach(block, look);
  };
  const bool isASCII = text != nullptr && text->isASCII();
  scan(names.files, text == nullptr, isASCII);
  scan(names.otherFiles, true, isASCII);
  scan(names.foldingFiles, true, isASCII && text->isFoundByBytes());
}

} // namespace searchsystem
