#include "platform/metadata/RecordGroup.h"

#include "platform/metadata/FolderKey.h"

#include <cstring>

namespace searchsystem {

namespace {

struct Header {
  std::uint32_t keySize;
  std::uint32_t recordSize;
  std::uint32_t entries;
};

} // namespace

std::size_t RecordGroup::sizeOf(const Record &record) noexcept {
  return sizeof(Header) + record.key.size() + record.bytes.size();
}

void RecordGroup::append(std::string &group, const Record &record) {
  const Header header{static_cast<std::uint32_t>(record.key.size()),
                      static_cast<std::uint32_t>(record.bytes.size()), record.entries};
  group.append(reinterpret_cast<const char *>(&header), sizeof header);
  group.append(record.key).append(record.bytes);
}

std::optional<RecordGroup::Record> RecordGroup::take(std::string_view &rest) noexcept {
  Header header{};
  if (rest.size() < sizeof header)
    return std::nullopt;
  std::memcpy(&header, rest.data(), sizeof header);
  rest.remove_prefix(sizeof header);
  if (header.keySize > rest.size() || header.recordSize > rest.size() - header.keySize)
    return std::nullopt;
  const Record record{rest.substr(0, header.keySize), header.entries,
                      rest.substr(header.keySize, header.recordSize)};
  rest.remove_prefix(header.keySize + header.recordSize);
  return record;
}

std::optional<std::vector<RecordGroup::Record>>
RecordGroup::merge(std::string_view group, std::span<const IndexRecord> records,
                   std::span<const std::string> gone) {
  std::vector<Record> merged;
  const auto putInBefore = [&](const Record *old) {
    for (; !records.empty() && (old == nullptr || records.front().key <= old->key);
         records = records.subspan(1)) {
      const IndexRecord &record = records.front();
      merged.push_back({record.key, record.entries, record.bytes});
    }
  };
  const auto isGone = [&](std::string_view key) {
    while (!gone.empty() && gone.front() < key && !FolderKey::isBelow(key, gone.front()))
      gone = gone.subspan(1);
    return !gone.empty() && FolderKey::isInTree(key, gone.front());
  };
  std::optional<std::string_view> lastKey;
  while (!group.empty()) {
    const std::optional<Record> old = take(group);
    if (!old || (lastKey && old->key <= *lastKey))
      return std::nullopt;
    lastKey = old->key;
    putInBefore(&*old);
    const bool isReplaced = !merged.empty() && merged.back().key == old->key;
    if (!isReplaced && !isGone(old->key))
      merged.push_back(*old);
  }
  putInBefore(nullptr);
  return merged;
}

} // namespace searchsystem
