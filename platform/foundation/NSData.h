#pragma once

#include "platform/foundation/NSObject.h"
#include "platform/foundation/Ref.h"

#include <cstddef>
#include <string_view>

/// Bytes.
///
/// The bytes live inside the object. Each thread keeps the memory of the last one that it has
/// freed, if that is not large, for the next: who reads the beginnings of many files pays for one
/// buffer.
/// Ownership: counted. Threads: any, once it is filled.
class NSData final : public NSObject {
public:
  /// Room for `capacity` bytes, with none in it. Throws `std::bad_alloc`.
  static Ref<NSData> withCapacity(std::size_t capacity);

  /// The room, to be filled by who has made the object.
  [[nodiscard]] char *mutableBytes() noexcept { return reinterpret_cast<char *>(this + 1); }

  /// Says how many bytes there are; not more than there is room for.
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
