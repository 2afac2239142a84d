#include "hosts/ssfind/Place.h"

#include "hosts/ssfind/Paths.h"

#include <algorithm>

namespace searchsystem::ssfind {

void Place::show(std::string_view path, std::string &shown) const {
  if (files_ != nullptr) {
    shown = files_->shown(path);
    return;
  }
  shown = folder_->shown;
  if (!shown.ends_with('/'))
    shown += '/';
  shown += pathBelow(path, folder_->path);
}

std::string_view Place::below(std::string_view path) const {
  if (files_ == nullptr)
    return pathBelow(path, folder_->path);
  std::string_view listed = files_->shown(path);
  while (listed.starts_with("./") || listed.starts_with('/'))
    listed.remove_prefix(listed.starts_with('/') ? 1 : 2);
  return listed;
}

std::optional<std::size_t> Place::depthOf(std::string_view path) const {
  if (files_ != nullptr)
    return std::nullopt;
  const std::string_view rest = pathBelow(path, folder_->path);
  return static_cast<std::size_t>(std::count(rest.begin(), rest.end(), '/')) + 1;
}

} // namespace searchsystem::ssfind
