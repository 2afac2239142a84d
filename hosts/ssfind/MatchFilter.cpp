#include "hosts/ssfind/MatchFilter.h"

#include "hosts/ssfind/EntryStatus.h"

#include <algorithm>

namespace searchsystem::ssfind {

bool MatchFilter::passes(std::string_view path) const {
  const std::string_view name = path.substr(path.rfind('/') + 1);
  const auto matches = [&](const NamePattern &pattern) { return pattern.matches(name); };
  const std::vector<NamePattern> &names = options_.furtherNames;
  if (pass_.names == Pass::Names::All && !std::all_of(names.begin(), names.end(), matches))
    return false;
  if (pass_.names == Pass::Names::Any && std::none_of(names.begin(), names.end(), matches))
    return false;
  return restrictions_ == nullptr || meetRestrictions(path);
}

bool MatchFilter::meetRestrictions(std::string_view path) const {
  if (restrictions_->depth && place_.depthOf(path) > restrictions_->depth)
    return false;
  if (restrictions_->excluded.containFile(place_.below(path)))
    return false;
  if (!restrictions_->size)
    return true;
  const std::optional<EntryStatus> status = statusOf(std::string(path).c_str());
  return status && restrictions_->size->contains(status->size);
}

} // namespace searchsystem::ssfind
