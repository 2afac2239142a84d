#include "pdf_reader/XRefEntries.h"

#include <algorithm>
#include <cstddef>

namespace searchsystem {

void XRefEntries::set(std::int32_t number, const XRefEntry &entry) {
  const auto index = static_cast<std::size_t>(number);
  // Numbers that go up one by one, or nearly, find their place below this.
  constexpr std::size_t leastBound = 64;
  const std::size_t bound = std::max(leastBound, dense_.size() + dense_.size() / 2);
  if (index >= dense_.size() && index < bound) {
    if (dense_.capacity() <= index)
      dense_.reserve(bound);
    dense_.resize(index + 1);
    const auto end = sparse_.upper_bound(number);
    for (auto known = sparse_.begin(); known != end; ++known)
      dense_[static_cast<std::size_t>(known->first)] = known->second;
    sparse_.erase(sparse_.begin(), end);
  }
  if (index < dense_.size())
    dense_[index] = entry;
  else
    sparse_[number] = entry;
}

XRefEntry XRefEntries::at(std::int32_t number) const noexcept {
  if (number >= 0 && static_cast<std::size_t>(number) < dense_.size())
    return dense_[static_cast<std::size_t>(number)];
  const auto known = sparse_.find(number);
  return known == sparse_.end() ? XRefEntry() : known->second;
}

void XRefEntries::clear() noexcept {
  dense_ = {};
  sparse_.clear();
}

} // namespace searchsystem
