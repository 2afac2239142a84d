#pragma once

#include "platform/foundation/NSObject.h"
#include "platform/foundation/Ref.h"

#include <cstddef>
#include <string_view>

namespace searchsystem {

/// Bytes.
///
/// The bytes live inside the object. Each thread keeps the memory of its last freed object, unless
/// large, for the next: reading the beginnings of many files takes one buffer.
/// Ownership: counted. Threads: any, once it is filled.
class NSData final : public NSObject {
public:
  /// An empty object with room for `capacity` bytes. Throws `std::bad_alloc`.
  static Ref<NSData> withCapacity(std::size_t capacity);

  /// The room, to be filled by the creator.
  [[nodiscard]] char *mutableBytes() noexcept { return reinterpret_cast<char *>(this + 1); }

  /// Sets the number of bytes, at most the capacity.
  void setLength(std::size_t length) noexcept { length_ = length; }

  [[nodiscard]] std::string_view view() const noexcept {
    return {reinterpret_cast<const char *>(this + 1), length_};
  }

  static void operator delete(void *memory) noexcept;

private:
  NSData() noexcept = default;
  ~NSData() override = default;

  std::size_t length_ = 0;
};

} // namespace searchsystem
