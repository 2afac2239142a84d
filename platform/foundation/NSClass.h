#pragma once

#include "platform/foundation/NSObject.h"
#include "platform/foundation/Ref.h"

#include <string_view>

namespace searchsystem {

/// Classes looked up by name at run time, because a system may lack them.
///
/// A class that can be looked up registers itself when the platform library is loaded.
/// Threads: registration happens before `main`; all else main thread.
class NSClass {
public:
  using Create = Ref<NSObject> (*)();

  /// Registers the class for the life of the process; `name` must live as long.
  NSClass(std::string_view name, Create create) noexcept;
  NSClass(const NSClass &) = delete;
  NSClass &operator=(const NSClass &) = delete;

  /// The class of that name, or null if the system has none.
  static const NSClass *named(std::string_view name) noexcept;

  /// A new instance, or null if memory is short.
  [[nodiscard]] Ref<NSObject> newInstance() const noexcept;

  /// Hides the class of that name, which must live as long, and shows the one hidden before.
  static void hideForTesting(std::string_view name) noexcept;

private:
  static const NSClass *first;
  const std::string_view name_;
  const Create create_;
  const NSClass *const next_;
};

} // namespace searchsystem
