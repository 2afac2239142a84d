#include "hosts/ssfind/UnreadFiles.h"

#include "platform/content/Content.h"

namespace searchsystem::ssfind {

std::string UnreadFiles::summary() const {
  std::map<std::int32_t, std::size_t> counts;
  for (const auto &[path, file] : files_)
    ++counts[file.reason];
  std::string text = std::to_string(files_.size()) + (files_.size() == 1 ? " file" : " files") +
                     " could not be read:";
  for (const auto &[reason, count] : counts)
    text.append(" ").append(textOf(reason)).append(" (" + std::to_string(count) + "),");
  text.pop_back();
  return text;
}

std::string_view UnreadFiles::textOf(std::int32_t reason) noexcept {
  switch (reason) {
  case PFContentNeedsPassword:
    return "needs a password";
  case PFContentDamaged:
    return "damaged";
  case PFContentNoText:
    return "no text";
  case PFContentTooLarge:
    return "too large";
  case PFContentTookTooLong:
    return "took too long";
  case PFContentReaderCrashed:
    return "its reader crashed";
  case PFContentCannotBeOpened:
    return "cannot be opened";
  case PFContentNoReader:
    return "no reader";
  default:
    return "unknown reason";
  }
}

} // namespace searchsystem::ssfind
