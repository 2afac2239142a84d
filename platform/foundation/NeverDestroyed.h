#pragma once

#include <new>
#include <utility>

namespace searchsystem {

/// Holds an object that lives as long as the process: its destructor never runs, since threads may
/// still use it at exit. Allocates nothing.
template <class T> class NeverDestroyed {
public:
  template <class... Arguments> explicit NeverDestroyed(Arguments &&...arguments) {
    ::new (memory_) T(std::forward<Arguments>(arguments)...);
  }

  [[nodiscard]] T &get() noexcept { return *std::launder(reinterpret_cast<T *>(memory_)); }

private:
  alignas(T) unsigned char memory_[sizeof(T)];
};

} // namespace searchsystem
