#pragma once

#include "testing/Shortage.h"

namespace searchsystem {

/// The memory that can run short: that of `new` and of SQLite and, unless a sanitizer replaces it,
/// that of `malloc`.
namespace Allocations {

extern Shortage shortage;

/// While it lives, the calling thread always gets memory.
class Exempt {
public:
  Exempt() noexcept;
  ~Exempt();
  Exempt(const Exempt &) = delete;
  Exempt &operator=(const Exempt &) = delete;
};

/// Call it before anything uses SQLite.
void watchSQLite();

} // namespace Allocations

} // namespace searchsystem
