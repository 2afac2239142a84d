#include "platform/content/ContentSettings.h"

#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/NeverDestroyed.h"

#include <cassert>
#include <exception>

namespace searchsystem {

namespace {

ContentSettings &settings() noexcept {
  assert(MainRunLoop::shared().isMainThread());
  static NeverDestroyed<ContentSettings> shared;
  return shared.get();
}

} // namespace

const ContentSettings &ContentSettings::current() noexcept { return settings(); }

} // namespace searchsystem

void PFContentSetDepth(int depth) { searchsystem::settings().isDeep = depth == PFContentDeep; }

int PFContentSetExtensions(CFArrayRef extensions) {
  try {
    using searchsystem::FileKinds;
    searchsystem::settings().kinds = extensions != nullptr ? FileKinds(*extensions) : FileKinds();
    return 1;
  } catch (const std::exception &) {
    return 0;
  }
}

void PFContentSetUnreadCallback(PFContentUnreadCallback callback, void *context) {
  searchsystem::settings().unreadCallback = callback;
  searchsystem::settings().unreadContext = context;
}
