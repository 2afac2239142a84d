#pragma once

#include <cstddef>
#include <utility>

namespace searchsystem {

/// Owner of one reference to a counted object (`NSObject`), or of none.
///
/// Threads: one `Ref` is used by one thread at a time; several may name the same object.
template <class T> class Ref {
public:
  Ref() noexcept = default;
  Ref(std::nullptr_t) noexcept {}

  /// Shares `object`, which may be null: takes a reference of its own.
  explicit Ref(T *object) noexcept : object_(object) {
    if (object_ != nullptr)
      object_->retain();
  }

  /// Takes over the caller's reference, such as that of a new object.
  static Ref adopt(T *object) noexcept {
    Ref ref;
    ref.object_ = object;
    return ref;
  }

  Ref(const Ref &other) noexcept : Ref(other.object_) {}
  Ref(Ref &&other) noexcept : object_(std::exchange(other.object_, nullptr)) {}

  template <class U> Ref(Ref<U> other) noexcept : object_(other.leak()) {}

  /// Stores the new object before releasing the old one, so that a destructor that reads this `Ref`
  /// sees the new state.
  Ref &operator=(Ref other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  ~Ref() {
    if (object_ != nullptr)
      object_->release();
  }

  /// Gives the reference to the caller, who must release it.
  [[nodiscard]] T *leak() noexcept { return std::exchange(object_, nullptr); }

  [[nodiscard]] T *get() const noexcept { return object_; }
  T *operator->() const noexcept { return object_; }
  T &operator*() const noexcept { return *object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

  friend bool operator==(const Ref &a, const Ref &b) noexcept { return a.object_ == b.object_; }
  friend bool operator==(const Ref &a, std::nullptr_t) noexcept { return a.object_ == nullptr; }

private:
  T *object_ = nullptr;
};

} // namespace searchsystem
