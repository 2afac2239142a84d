#pragma once

#include "platform/foundation/TryTwice.h"

#include <iterator>

namespace searchsystem {

/// Moves what is in `from` to the end of `to`, in up to `tries` attempts. If memory stays short it
/// moves nothing and returns false. Takes no memory if `to` is empty.
template <class Container> bool moveToEnd(Container &from, Container &to, int tries = 1) noexcept {
  const bool isMoved = tryTimes(tries, [&] {
    if (to.empty())
      return to.swap(from);
    to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
  });
  if (isMoved)
    from.clear();
  return isMoved;
}

} // namespace searchsystem
