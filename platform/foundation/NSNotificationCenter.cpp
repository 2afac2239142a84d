#include "platform/foundation/NSNotificationCenter.h"

#include "platform/foundation/MainRunLoop.h"

#include <cassert>

NSNotificationCenter &NSNotificationCenter::defaultCenter() noexcept {
  static auto *const center = new NSNotificationCenter;
  return *center;
}

void NSNotificationCenter::addObserver(void *observer, Handler handler, std::string_view name) {
  assert(MainRunLoop::shared().isMainThread());
  registrations_.push_back({observer, handler, std::string(name)});
}

void NSNotificationCenter::removeObserver(const void *observer, std::string_view name) noexcept {
  assert(MainRunLoop::shared().isMainThread());
  for (Registration &registration : registrations_)
    if (registration.observer == observer && registration.name == name)
      registration.handler = nullptr;
  if (posts_ == 0)
    std::erase_if(registrations_, [](const Registration &r) { return r.handler == nullptr; });
}

void NSNotificationCenter::postNotification(std::string_view name, NSObject *object) {
  assert(MainRunLoop::shared().isMainThread());
  ++posts_;
  const NSNotification notification{name, object};
  const std::size_t count = registrations_.size();
  for (std::size_t i = 0; i < count; ++i) {
    const Registration &registration = registrations_[i];
    if (registration.handler != nullptr && registration.name == name)
      registration.handler(registration.observer, notification);
  }
  if (--posts_ == 0)
    std::erase_if(registrations_, [](const Registration &r) { return r.handler == nullptr; });
}
