#pragma once

#include "platform/content/Content.h"
#include "platform/content/FileKinds.h"

namespace searchsystem {

/// What the host has set with the functions of `Content.h`. Main thread. A search takes a copy when
/// it starts.
struct ContentSettings {
  bool isDeep = false;
  FileKinds kinds;
  PFContentUnreadCallback unreadCallback = nullptr;
  void *unreadContext = nullptr;

  /// Those in force.
  [[nodiscard]] static const ContentSettings &current() noexcept;
};

} // namespace searchsystem
