#include "hosts/ssfind/ProgressText.h"

namespace searchsystem::ssfind {

std::string ProgressText::text(std::uint64_t matches, const PFContentProgress &progress) const {
  std::string text = "searching… " + std::to_string(matches) + " found";
  if (progress.files == 0)
    return text;
  if (expectedFiles)
    text += ", " + std::to_string(progress.files - filesBefore) + " of " +
            std::to_string(*expectedFiles);
  else
    text += ", " + std::to_string(progress.files);
  text += " files read";
  if (progress.unread != 0)
    text += " (" + std::to_string(progress.unread) + " could not be)";
  if (progress.folders != 0)
    text += " in " + std::to_string(progress.folders) + " folders";
  return text;
}

} // namespace searchsystem::ssfind
