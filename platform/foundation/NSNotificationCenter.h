#pragma once

#include "platform/foundation/NSObject.h"

#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// A notification and its sender. Lives while the handlers run.
struct NSNotification {
  std::string_view name;
  NSObject *object;
};

/// Delivers notifications between objects that do not know each other.
///
/// Ownership: borrows observers; an observer removes itself before it is destroyed.
/// Threads: main thread only.
class NSNotificationCenter {
public:
  using Handler = void (*)(void *observer, const NSNotification &notification);

  static NSNotificationCenter &defaultCenter() noexcept;

  /// Registers `handler`, called with `observer`, for notifications of that name from any sender.
  /// Throws `std::bad_alloc`, and then nothing has been added.
  void addObserver(void *observer, Handler handler, std::string_view name);

  /// Removes every registration of the observer for that name.
  void removeObserver(const void *observer, std::string_view name) noexcept;

  /// Calls the handlers in order of registration; not those removed or added meanwhile.
  void postNotification(std::string_view name, NSObject *object);

private:
  struct Registration {
    void *observer;
    Handler handler;
    std::string name;
  };

  void forgetRemoved() noexcept;

  std::vector<Registration> registrations_;
  /// The number of running posts, during which removed registrations stay, empty.
  int posts_ = 0;
};

} // namespace searchsystem
