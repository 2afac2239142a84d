#pragma once

#include "platform/foundation/NSObject.h"
#include "platform/foundation/Ref.h"

#include <cstddef>
#include <memory>
#include <string_view>

namespace searchsystem {

/// Bytes.
///
/// Ownership: counted. Threads: any, once it is filled.
class NSData final : public NSObject {
public:
  /// An empty object with room for `capacity` bytes. Throws `std::bad_alloc`.
  static Ref<NSData> withCapacity(std::size_t capacity) {
    return Ref<NSData>::adopt(new NSData(capacity));
  }

  /// The room, to be filled by the creator.
  [[nodiscard]] char *mutableBytes() noexcept { return bytes_.get(); }

  /// Sets the number of bytes, at most the capacity.
  void setLength(std::size_t length) noexcept { length_ = length; }

  [[nodiscard]] std::string_view view() const noexcept { return {bytes_.get(), length_}; }

private:
  explicit NSData(std::size_t capacity)
      : bytes_(std::make_unique_for_overwrite<char[]>(capacity)) {}
  ~NSData() override = default;

  const std::unique_ptr<char[]> bytes_;
  std::size_t length_ = 0;
};

} // namespace searchsystem
