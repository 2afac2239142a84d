#pragma once

#include "hosts/ssfind/Options.h"
#include "hosts/ssfind/SearchPlan.h"

#include <vector>

namespace searchsystem::ssfind {

/// The folders below `search` that the library's searches leave out for the dot at the beginning of
/// their names, at any depth, also in one another; not those that the restrictions leave out, nor
/// what lies in packages, behind links or on other file systems. What cannot be read is passed
/// over. Ends early when an interrupt comes.
[[nodiscard]] std::vector<Folder> hiddenFoldersBelow(const Folder &folder, const Folder &root,
                                                     const Restrictions &restrictions);

} // namespace searchsystem::ssfind
