#include "platform/foundation/NSClass.h"

#include "platform/foundation/TryTwice.h"

#include <utility>

namespace searchsystem {

NSClass *NSClass::first = nullptr;

NSClass::NSClass(std::string_view name, Create create) noexcept
    : name_(name), create_(create), next_(std::exchange(first, this)) {}

NSClass *NSClass::find(std::string_view name) noexcept {
  NSClass *found = first;
  while (found != nullptr && found->name_ != name)
    found = found->next_;
  return found;
}

const NSClass *NSClass::named(std::string_view name) noexcept {
  const NSClass *const found = find(name);
  return found != nullptr && !found->isHidden_ ? found : nullptr;
}

Ref<NSObject> NSClass::newInstance() const noexcept {
  Ref<NSObject> instance;
  tryTwice([&] { instance = create_(); });
  return instance;
}

void NSClass::hideForTesting(std::string_view name, bool isHidden) noexcept {
  if (NSClass *const found = find(name))
    found->isHidden_ = isHidden;
}

} // namespace searchsystem
