#include "platform/content/OpenedPhotograph.h"

#include "platform/foundation/FileItem.h"
#include "platform/foundation/PathComponents.h"

#include <string>
#include <string_view>

namespace searchsystem {

namespace {

FileDescriptor openedFile(const NSString &path) noexcept {
  FileItem item(path);
  return item.openRegularFile();
}

FileDescriptor openedSidecar(std::string_view path) {
  FileDescriptor sidecar = openedFile(*NSString::create(std::string(path).append(".xmp")));
  if (sidecar)
    return sidecar;
  const std::string_view extension = extensionOfName(lastPathComponent(path));
  if (extension.empty())
    return sidecar;
  return openedFile(
      *NSString::create(std::string(path, 0, path.size() - extension.size()).append("xmp")));
}

} // namespace

OpenPhotograph openedPhotograph(const NSString &path) {
  OpenPhotograph open;
  open.photograph = openedFile(path);
  if (open.photograph)
    open.sidecar = openedSidecar(path.view());
  return open;
}

} // namespace searchsystem
