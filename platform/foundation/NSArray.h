#pragma once

#include "platform/foundation/NSObject.h"
#include "platform/foundation/Ref.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace searchsystem {

/// An immutable list of objects.
///
/// Ownership: counted; holds a reference to each element. Threads: any; immutable.
class NSArray final : public NSObject {
public:
  /// Throws `std::bad_alloc`.
  static Ref<const NSArray> create(std::vector<Ref<const NSObject>> elements) {
    return Ref<const NSArray>::adopt(new NSArray(std::move(elements)));
  }

  [[nodiscard]] std::size_t count() const noexcept { return elements_.size(); }

  /// The element at `index`, which must be below `count()`.
  [[nodiscard]] const NSObject *objectAtIndex(std::size_t index) const noexcept {
    return elements_[index].get();
  }

private:
  explicit NSArray(std::vector<Ref<const NSObject>> elements) noexcept
      : elements_(std::move(elements)) {}
  ~NSArray() override = default;

  const std::vector<Ref<const NSObject>> elements_;
};

} // namespace searchsystem
