#include "readers/photographs/FileWindows.h"

#include <algorithm>

namespace searchsystem {

FileWindows::FileWindows(ByteSource &source, ReadBudget &budget)
    : source_(&source), budget_(budget), size_(source.size()) {}

FileWindows::FileWindows(std::string_view memory, ReadBudget &budget)
    : source_(nullptr), memory_(memory), budget_(budget), size_(memory.size()) {}

const FileWindows::Window *FileWindows::windowWith(std::uint64_t offset,
                                                   std::size_t count) noexcept {
  for (Window &window : windows_) {
    if (window.offset <= offset && offset + count <= window.offset + window.size) {
      window.lastUse = ++uses_;
      return &window;
    }
  }
  return nullptr;
}

const FileWindows::Window *FileWindows::load(std::uint64_t offset, std::size_t count) {
  count = static_cast<std::size_t>(std::min<std::uint64_t>(count, size_ - offset));
  if (!budget_.spendRead() || !budget_.spendBytes(count))
    return nullptr;
  Window &oldest =
      *std::min_element(windows_.begin(), windows_.end(),
                        [](const Window &a, const Window &b) { return a.lastUse < b.lastUse; });
  if (oldest.bytes == nullptr)
    oldest.bytes.reset(new char[windowSize]);
  oldest.size = source_->read(offset, oldest.bytes.get(), count);
  oldest.offset = offset;
  oldest.lastUse = ++uses_;
  return &oldest;
}

std::string_view FileWindows::at(std::uint64_t offset, std::size_t count) {
  if (budget_.isSpent() || count > longestView || offset > size_ || count > size_ - offset)
    return {};
  if (source_ == nullptr)
    return memory_.substr(static_cast<std::size_t>(offset), count);
  const Window *window = windowWith(offset, count);
  if (window == nullptr)
    window = load(offset - std::min(offset, lead), windowSize);
  if (window == nullptr || offset + count > window->offset + window->size)
    return {};
  return {window->bytes.get() + (offset - window->offset), count};
}

std::string_view FileWindows::peek(std::uint64_t offset, std::size_t count) {
  if (budget_.isSpent() || count > longestView || offset > size_ || count > size_ - offset)
    return {};
  if (source_ == nullptr || windowWith(offset, count) != nullptr)
    return at(offset, count);
  const Window *const window = load(offset, count);
  if (window == nullptr || window->size < count)
    return {};
  return {window->bytes.get(), count};
}

std::string FileWindows::read(std::uint64_t offset, std::size_t count) {
  if (offset >= size_)
    return {};
  count = static_cast<std::size_t>(std::min<std::uint64_t>(count, size_ - offset));
  if (!budget_.spendBytes(count))
    return {};
  if (count <= longestView || source_ == nullptr)
    return std::string(source_ == nullptr ? memory_.substr(static_cast<std::size_t>(offset), count)
                                          : at(offset, count));
  if (!budget_.spendRead())
    return {};
  std::string bytes(count, '\0');
  bytes.resize(source_->read(offset, bytes.data(), count));
  return bytes;
}

} // namespace searchsystem
