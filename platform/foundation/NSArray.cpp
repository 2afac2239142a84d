#include "platform/foundation/NSArray.h"

#include <utility>

NSArray::NSArray(std::vector<Ref<const NSObject>> elements) noexcept
    : elements_(std::move(elements)) {}

Ref<const NSArray> NSArray::create(std::vector<Ref<const NSObject>> elements) {
  return Ref<const NSArray>::adopt(new NSArray(std::move(elements)));
}
