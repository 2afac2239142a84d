#include "platform/foundation/FilePackage.h"

#include "platform/foundation/FileItem.h"
#include "platform/foundation/NSWorkspace.h"
#include "platform/foundation/TryTwice.h"

int PFFileIsPackage(const char *path) {
  using namespace searchsystem;
  bool isPackage = false;
  if (path != nullptr)
    tryTwice([&] {
      const Ref<const NSString> name = NSString::create(path);
      isPackage = isFilePackage(FileItem(*name));
    });
  return isPackage ? 1 : 0;
}
