#pragma once

#include "FileSharchFunction/SearchSystem/SearchSystem.h"

/// Calls a host's callback, if there is one. What it throws is the host's own affair and dropped
/// here. Main thread.
inline void callHost(SearchResultCallback callback, CFStringRef path, int32_t state) noexcept {
  if (callback == nullptr)
    return;
  try {
    callback(path, state);
  } catch (...) {
    return;
  }
}
