#include "readers/photographs/TIFFDirectory.h"

#include <algorithm>
#include <array>

namespace searchsystem {

namespace {

/// The bytes of one number of each type; 0 for none (TIFF 6.0, section 2; BigTIFF; 129 is the UTF-8
/// of Exif 3.0, 4.6.2).
std::size_t unitSizeOf(std::uint16_t type) noexcept {
  constexpr std::array<std::uint8_t, 19> sizes{0, 1, 1, 2, 4, 8, 1, 1, 2, 4,
                                               8, 4, 8, 4, 0, 0, 8, 8, 8};
  constexpr std::uint16_t utf8 = 129;
  return type < sizes.size() ? sizes[type] : type == utf8 ? 1 : 0;
}

} // namespace

TIFFDirectory::TIFFDirectory(const ByteRange &block, const TIFFLayout &layout, std::uint64_t offset)
    : block_(block), layout_(layout), position_(offset) {
  const std::size_t countSize = layout.isBig ? 8 : 2;
  if (!block.holds(offset, countSize))
    return;
  position_ = offset + countSize;
  const std::uint64_t count = number(offset, countSize);
  left_ = std::min(count, (block.size() - position_) / entrySize());
  // Where the count lies, nothing stands behind the entries.
  end_ = left_ == count ? position_ + left_ * entrySize() : block.size();
}

std::optional<TIFFEntry> TIFFDirectory::next() {
  while (left_ > 0 && block_.budget().spendEntry()) {
    --left_;
    const auto entry = entryAt(position_);
    position_ += entrySize();
    if (entry)
      return entry;
  }
  return std::nullopt;
}

std::optional<TIFFEntry> TIFFDirectory::entryAt(std::uint64_t offset) const {
  const std::string_view bytes = block_.at(offset, entrySize());
  if (bytes.empty())
    return std::nullopt;
  const auto tag = static_cast<std::uint16_t>(numberOf(bytes, 2, layout_.order));
  const auto type = static_cast<std::uint16_t>(numberOf(bytes.substr(2), 2, layout_.order));
  const std::size_t unitSize = unitSizeOf(type);
  const std::uint64_t count = numberOf(bytes.substr(4), offsetSize(), layout_.order);
  if (unitSize == 0 || count == 0 || count > block_.size() / unitSize)
    return std::nullopt;
  const std::uint64_t size = count * unitSize;
  const std::uint64_t place = offset + 4 + offsetSize();
  const std::uint64_t begin =
      size <= offsetSize() ? place
                           : numberOf(bytes.substr(4 + offsetSize()), offsetSize(), layout_.order);
  if (!block_.holds(begin, size))
    return std::nullopt;
  return TIFFEntry{tag, type, unitSize, block_.part(begin, size)};
}

std::uint64_t TIFFDirectory::nextDirectory() const { return number(end_, offsetSize()); }

} // namespace searchsystem
