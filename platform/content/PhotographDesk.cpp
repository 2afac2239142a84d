// What a host asks about single photographs.

#include "platform/content/Content.h"
#include "platform/content/FileKinds.h"
#include "platform/content/OpenedPhotograph.h"
#include "platform/content/PhotographReading.h"
#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/NeverDestroyed.h"
#include "platform/foundation/PathComponents.h"

#include <cassert>

namespace searchsystem {

namespace {

/// Its worker waits for the host's next question as long as the reader program lives.
struct PhotographDesk {
  Cancellation neverCancelled;
  PhotographWorkers workers{neverCancelled};
};

class UseOfReader {
public:
  UseOfReader() { ReaderConnection::shared().beginUse(); }
  ~UseOfReader() { ReaderConnection::shared().endUse(); }
  UseOfReader(const UseOfReader &) = delete;
  UseOfReader &operator=(const UseOfReader &) = delete;
};

PhotographContent contentOf(const NSString &path) {
  static NeverDestroyed<PhotographDesk> desk;
  PhotographContent found;
  found.reason = UnreadReason::cannotBeOpened;
  if (!FileKinds::isPhotograph(extensionOfName(path.view())))
    return found;
  const OpenPhotograph open = openedPhotograph({.path = &path});
  if (open.photograph) {
    const UseOfReader use;
    PhotographReading(desk.get().workers, nullptr)
        .read({&open, 1}, [&](std::size_t, const PhotographContent &content) { found = content; });
  }
  return found;
}

Ref<const NSString> textOf(const std::string &text) {
  return text.empty() ? nullptr : NSString::create(text);
}

} // namespace

} // namespace searchsystem

int PFContentCopyPhotograph(CFStringRef path, PFPhotograph *photograph) {
  using namespace searchsystem;
  assert(MainRunLoop::shared().isMainThread());
  try {
    const PhotographContent content = contentOf(*path);
    Ref<const NSString> maker = textOf(content.maker);
    Ref<const NSString> model = textOf(content.model);
    photograph->hasDate = content.date ? 1 : 0;
    photograph->date = content.date.value_or(0);
    photograph->maker = maker.leak();
    photograph->model = model.leak();
    return content.reason == UnreadReason::none ? 1 : 0;
  } catch (...) {
    *photograph = {};
    return 0;
  }
}
