#include "platform/content/OpenedPhotograph.h"

#include "platform/foundation/PathComponents.h"
#include "readers/ReaderProtocol.h"

#include <algorithm>
#include <optional>
#include <string>
#include <sys/resource.h>
#include <utility>

namespace searchsystem {

namespace {

OpenFile openedFileAt(const NSString &path) noexcept {
  FileItem item(path);
  return openedFile(item);
}

OpenFile openedSidecar(std::string_view path) {
  OpenFile sidecar = openedFileAt(*NSString::create(std::string(path).append(sidecarEnding)));
  if (sidecar)
    return sidecar;
  const std::string_view extension = extensionOfName(lastPathComponent(path));
  if (extension.empty())
    return sidecar;
  const std::size_t size = path.size() - extension.size() - 1;
  return openedFileAt(*NSString::create(std::string(path, 0, size).append(sidecarEnding)));
}

} // namespace

OpenFile openedFile(FileItem &item) noexcept {
  OpenFile file;
  file.descriptor = item.openRegularFile();
  if (file) {
    // The item's status may be a link's.
    const std::optional<FileStatus> &status = item.status();
    const std::optional<FileStatus> own =
        status && status->kind == FileKind::Regular ? status : fileStatus(file.descriptor.number());
    file.size = own ? own->size : 0;
  }
  return file;
}

OpenPhotograph openedPhotograph(PhotographToRead photograph) {
  OpenPhotograph open;
  open.photograph = photograph.file ? std::move(photograph.file) : openedFileAt(*photograph.path);
  if (open.photograph && photograph.mayHaveSidecar)
    open.sidecar = openedSidecar(photograph.path->view());
  return open;
}

std::size_t mostOpenPhotographs() noexcept {
  // Ten threads hold photographs open, and five of them sidecars, too.
  constexpr rlim_t share = 64;
  rlimit files{};
  if (getrlimit(RLIMIT_NOFILE, &files) != 0)
    return 1;
  return static_cast<std::size_t>(
      std::clamp<rlim_t>(files.rlim_cur / share, 1, PhotographBatch::mostPhotographs));
}

} // namespace searchsystem
