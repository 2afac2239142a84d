#pragma once

#include <new>
#include <utility>

/// Room for an object that lives as long as the process: no destructor runs at its end, while
/// threads may still use it, and none of it is allocated.
template <class T> class NeverDestroyed {
public:
  template <class... Arguments> explicit NeverDestroyed(Arguments &&...arguments) {
    ::new (memory_) T(std::forward<Arguments>(arguments)...);
  }

  [[nodiscard]] T &get() noexcept { return *std::launder(reinterpret_cast<T *>(memory_)); }

private:
  alignas(T) unsigned char memory_[sizeof(T)];
};
