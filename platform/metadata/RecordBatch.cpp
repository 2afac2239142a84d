#include "platform/metadata/RecordBatch.h"

#include "platform/metadata/FolderPath.h"

#include <algorithm>
#include <optional>
#include <tuple>

namespace searchsystem {

void RecordBatch::add(std::string_view path, const FolderRecord::Facts &facts,
                      const FolderNames &names) {
  if (entries_.size() == entries_.capacity())
    entries_.reserve(std::max<std::size_t>(64, 2 * entries_.size()));
  const std::size_t begin = bytes_.size();
  FolderRecord::pack(bytes_, path, facts, names);
  entries_.push_back({.begin = begin,
                      .end = bytes_.size(),
                      .pathSize = static_cast<std::uint32_t>(path.size()),
                      .listing = facts.listing,
                      .part = facts.part,
                      .isGone = facts.kind == FolderRecord::Kind::Gone});
}

void RecordBatch::sort() {
  std::sort(entries_.begin(), entries_.end(), [this](const Entry &a, const Entry &b) {
    const int order = FolderPath::compare(pathOf(a), pathOf(b));
    return order != 0
               ? order < 0
               : std::tie(a.isGone, a.listing, a.part) < std::tie(b.isGone, b.listing, b.part);
  });
  const Entry *first = nullptr;
  std::size_t kept = 0;
  for (const Entry &entry : entries_) {
    const bool isOfFirst = first != nullptr && pathOf(entry) == pathOf(*first);
    if (isOfFirst && entry.listing != first->listing)
      continue;
    entries_[kept] = entry;
    if (!isOfFirst)
      first = &entries_[kept];
    ++kept;
  }
  entries_.resize(kept);
}

bool RecordBatch::writeTo(IndexSegmentWriter &segment) const {
  std::string path;
  for (const Entry &entry : entries_) {
    std::string_view rest(bytes_.data() + entry.begin, entry.end - entry.begin);
    path.clear();
    const std::optional<FolderRecord> record = FolderRecord::take(rest, path);
    if (!record || !segment.add(*record, path))
      return false;
  }
  return true;
}

} // namespace searchsystem
