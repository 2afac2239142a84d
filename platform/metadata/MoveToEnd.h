#pragma once

#include "platform/foundation/TryTwice.h"

#include <iterator>

namespace searchsystem {

/// Moves what is in `from` to the end of `to`, in up to `tries` attempts. Where memory stays short
/// it returns false and has moved nothing.
template <class Container> bool moveToEnd(Container &from, Container &to, int tries = 1) noexcept {
  const bool isMoved = tryTimes(tries, [&] {
    to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
  });
  if (isMoved)
    from.clear();
  return isMoved;
}

} // namespace searchsystem
