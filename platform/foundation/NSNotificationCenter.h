#pragma once

#include "platform/foundation/NSObject.h"

#include <string>
#include <string_view>
#include <vector>

/// A notification: what has happened, and to whom. Lives as long as the handlers run.
struct NSNotification {
  std::string_view name;
  NSObject *object;
};

/// Where objects tell others that something has happened, without knowing them.
///
/// Ownership: borrows observers; an observer removes itself before it is destroyed.
/// Threads: main thread only.
class NSNotificationCenter {
public:
  using Handler = void (*)(void *observer, const NSNotification &notification);

  static NSNotificationCenter &defaultCenter() noexcept;

  /// Has `handler` called with `observer` for each notification of that name, from any sender.
  /// Throws `std::bad_alloc`, and then nothing has been added.
  void addObserver(void *observer, Handler handler, std::string_view name);

  /// Removes every registration of the observer for that name.
  void removeObserver(const void *observer, std::string_view name) noexcept;

  /// Calls the handlers in the order of their registration. One that is removed meanwhile is not
  /// called any more, one that is added meanwhile not yet.
  void postNotification(std::string_view name, NSObject *object);

private:
  struct Registration {
    void *observer;
    Handler handler;
    std::string name;
  };

  void forgetRemoved() noexcept;

  std::vector<Registration> registrations_;
  /// How many posts are running: while there are any, removed registrations stay as empty ones.
  int posts_ = 0;
};
