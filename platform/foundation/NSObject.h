#pragma once

#include <atomic>
#include <cstdint>

namespace searchsystem {

/// Base of every object that is shared by reference counting.
///
/// Ownership: an object is created with one reference, which `Ref<T>::adopt` takes over. It is
/// destroyed on the thread that releases the last reference.
/// Threads: counting is atomic; everything else is up to the derived class.
class NSObject {
public:
  NSObject(const NSObject &) = delete;
  NSObject &operator=(const NSObject &) = delete;

  void retain() const noexcept { references_.fetch_add(1, std::memory_order_relaxed); }

  void release() const noexcept {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1)
      delete this;
  }

protected:
  NSObject() noexcept = default;
  virtual ~NSObject() = default;

private:
  mutable std::atomic<std::uint32_t> references_{1};
};

} // namespace searchsystem
