#pragma once

#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"

#include <string_view>
#include <utility>

namespace searchsystem {

/// One result of a metadata query.
///
/// Ownership: counted; holds a reference to its path. Threads: any; immutable.
class NSMetadataItem final : public NSObject {
public:
  /// Throws `std::bad_alloc`.
  static Ref<const NSMetadataItem> create(Ref<const NSString> path) {
    return Ref<const NSMetadataItem>::adopt(new NSMetadataItem(std::move(path)));
  }

  /// The value of an attribute; null when the item has none of that name. "kMDItemPath" is the full
  /// path, a string.
  [[nodiscard]] Ref<const NSObject> valueForAttribute(std::string_view name) const noexcept {
    return name == "kMDItemPath" ? path_ : nullptr;
  }

private:
  explicit NSMetadataItem(Ref<const NSString> path) noexcept : path_(std::move(path)) {}
  ~NSMetadataItem() override = default;

  const Ref<const NSString> path_;
};

} // namespace searchsystem
