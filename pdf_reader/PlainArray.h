#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <type_traits>

namespace searchsystem {

/// An array of plain values that grows in place where possible and leaves new values unset.
///
/// Ownership: owns the room. Threads: one at a time.
template <class T> class PlainArray {
  static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);

public:
  [[nodiscard]] T *data() const noexcept { return values_.get(); }
  [[nodiscard]] std::size_t capacity() const noexcept { return capacity_; }

  /// Makes room for `count` values, growing by at least half. Throws `std::bad_alloc`; the room is
  /// unchanged then.
  void reserve(std::size_t count) {
    if (count <= capacity_)
      return;
    const std::size_t capacity = std::max(count, capacity_ + capacity_ / 2);
    const bool fits = capacity <= static_cast<std::size_t>(-1) / sizeof(T);
    void *const grown = fits ? std::realloc(values_.get(), capacity * sizeof(T)) : nullptr;
    if (grown == nullptr)
      throw std::bad_alloc();
    static_cast<void>(values_.release());
    values_.reset(static_cast<T *>(grown));
    capacity_ = capacity;
  }

private:
  struct Free {
    void operator()(T *values) const noexcept { std::free(values); }
  };

  std::unique_ptr<T[], Free> values_;
  std::size_t capacity_ = 0;
};

} // namespace searchsystem
