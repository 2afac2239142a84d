#include "readers/documents/CrossReferenceTable.h"

namespace searchsystem {

CrossReference *CrossReferenceTable::find(std::uint64_t number) noexcept {
  const std::uint64_t group = number / groupSize;
  if (group >= groups_.size() || groups_[group] == nullptr)
    return nullptr;
  CrossReference &entry = (*groups_[group])[number % groupSize];
  return entry.kind == CrossReference::Kind::unknown ? nullptr : &entry;
}

CrossReference *CrossReferenceTable::make(std::uint64_t number) {
  if (number > highest)
    return nullptr;
  const auto group = static_cast<std::size_t>(number / groupSize);
  if (group >= groups_.size())
    groups_.resize(group + 1);
  if (groups_[group] == nullptr)
    groups_[group] = std::make_unique<Group>();
  return &(*groups_[group])[number % groupSize];
}

void CrossReferenceTable::forgetObjects() noexcept {
  for (const std::unique_ptr<Group> &group : groups_) {
    if (group == nullptr)
      continue;
    for (CrossReference &entry : *group) {
      entry.state = CrossReference::State::unread;
      entry.object = {};
    }
  }
}

} // namespace searchsystem
