#include "readers/documents/SourceWindow.h"

#include <algorithm>

namespace searchsystem {

SourceWindow::SourceWindow(ByteSource &source) : source_(source), size_(source.size()) {
  if (size_ > readAtOnce)
    return;
  whole_.reset(new char[static_cast<std::size_t>(size_) + 1]);
  // What became shorter meanwhile ends there.
  size_ = source_.read(0, whole_.get(), static_cast<std::size_t>(size_));
}

std::size_t SourceWindow::read(std::uint64_t offset, char *room, std::size_t count) noexcept {
  if (!isWhole())
    return source_.read(offset, room, count);
  const std::string_view bytes = at(offset, count).substr(0, count);
  std::copy(bytes.begin(), bytes.end(), room);
  return bytes.size();
}

std::string_view SourceWindow::at(std::uint64_t offset, std::size_t count) {
  if (offset >= size_)
    return {};
  if (isWhole())
    return {whole_.get() + offset, static_cast<std::size_t>(size_ - offset)};
  const std::uint64_t end = offset + std::min<std::uint64_t>(count, size_ - offset);
  Window *oldest = windows_.data();
  for (Window &window : windows_) {
    if (window.offset <= offset && end <= window.offset + window.size) {
      window.lastUse = ++uses_;
      const auto skipped = static_cast<std::size_t>(offset - window.offset);
      return {window.bytes.get() + skipped, window.size - skipped};
    }
    if (window.lastUse < oldest->lastUse)
      oldest = &window;
  }

  // A little in front as well: what is asked for next may stand there.
  constexpr std::uint64_t lead = 1024;
  const std::uint64_t begin = offset - std::min(offset, lead);
  const std::size_t wanted = std::max(windowSize, static_cast<std::size_t>(end - begin));
  if (oldest->room < wanted) {
    oldest->size = 0;
    oldest->bytes.reset(new char[wanted]);
    oldest->room = wanted;
  }
  oldest->size = source_.read(begin, oldest->bytes.get(), oldest->room);
  oldest->offset = begin;
  oldest->lastUse = ++uses_;
  const auto skipped = std::min(static_cast<std::size_t>(offset - begin), oldest->size);
  return {oldest->bytes.get() + skipped, oldest->size - skipped};
}

} // namespace searchsystem
