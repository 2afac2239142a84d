#pragma once

#include <cstdint>
#include <map>
#include <vector>

namespace searchsystem {

/// An object's entry in a cross-reference table.
struct XRefEntry {
  std::uint32_t offset = 0;
  std::uint16_t generation = 0;
  std::uint8_t type = 0;
};

/// The entries of a cross-reference table by object number. Memory depends on how many were set,
/// not on their numbers: a few bytes of a document can name object 2,000,000,000.
///
/// Threads: one at a time.
class XRefEntries {
public:
  /// `number` must not be negative. Throws `std::bad_alloc`.
  void set(std::int32_t number, const XRefEntry &entry);

  /// The entry of an object; zeros when none was set.
  [[nodiscard]] XRefEntry at(std::int32_t number) const noexcept;

  void clear() noexcept;

private:
  /// All entries below some number, and the others that were set.
  std::vector<XRefEntry> dense_;
  std::map<std::int32_t, XRefEntry> sparse_;
};

} // namespace searchsystem
