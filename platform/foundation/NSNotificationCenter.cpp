#include "platform/foundation/NSNotificationCenter.h"

#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/NeverDestroyed.h"

#include <cassert>
#include <utility>

namespace searchsystem {

NSNotificationCenter &NSNotificationCenter::defaultCenter() noexcept {
  static NeverDestroyed<NSNotificationCenter> center;
  return center.get();
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
    forgetRemoved();
}

void NSNotificationCenter::postNotification(std::string_view name, NSObject *object) {
  assert(MainRunLoop::shared().isMainThread());
  struct Post {
    explicit Post(NSNotificationCenter &posting) noexcept : center(posting) { ++center.posts_; }
    ~Post() {
      if (--center.posts_ == 0)
        center.forgetRemoved();
    }
    Post(const Post &) = delete;
    Post &operator=(const Post &) = delete;
    NSNotificationCenter &center;
  };
  const Post post(*this);
  const NSNotification notification{name, object};
  const std::size_t count = registrations_.size();
  for (std::size_t i = 0; i < count; ++i) {
    if (registrations_[i].handler == nullptr || registrations_[i].name != name)
      continue;
    // Copied first, since a handler may register more; nothing may fail here.
    const auto [observer, handler] =
        std::pair(registrations_[i].observer, registrations_[i].handler);
    handler(observer, notification);
  }
}

void NSNotificationCenter::forgetRemoved() noexcept {
  std::erase_if(registrations_, [](const Registration &r) { return r.handler == nullptr; });
}

} // namespace searchsystem
