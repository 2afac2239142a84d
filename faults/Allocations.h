#pragma once

#include "samples/Shortage.h"

/// The memory that can run short: that of `new` and of SQLite, and where no sanitizer has it for
/// itself, that of `malloc`.
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

/// To be called before anything uses SQLite.
void watchSQLite();

} // namespace Allocations
