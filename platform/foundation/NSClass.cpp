#include "platform/foundation/NSClass.h"

#include "platform/foundation/TryTwice.h"

#include <utility>

namespace searchsystem {

namespace {

std::string_view hidden;

} // namespace

const NSClass *NSClass::first = nullptr;

NSClass::NSClass(std::string_view name, Create create) noexcept
    : name_(name), create_(create), next_(std::exchange(first, this)) {}

const NSClass *NSClass::named(std::string_view name) noexcept {
  const NSClass *found = first;
  while (found != nullptr && (found->name_ != name || name == hidden))
    found = found->next_;
  return found;
}

Ref<NSObject> NSClass::newInstance() const noexcept {
  Ref<NSObject> instance;
  tryTwice([&] { instance = create_(); });
  return instance;
}

void NSClass::hideForTesting(std::string_view name) noexcept { hidden = name; }

} // namespace searchsystem
