#include "readers/documents/ObjectStore.h"

#include "readers/documents/CrossReferenceReader.h"

#include <algorithm>
#include <array>

namespace searchsystem {

namespace {

using Kind = CrossReference::Kind;
using State = CrossReference::State;

// Lengths, object streams and what they need may lie in one another.
constexpr int deepest = 24;
// How much of decoded object streams is kept.
constexpr std::size_t mostStreamBytes = std::size_t{64} << 20;

} // namespace

ObjectStore::ObjectStore(ByteSource &source, std::uint64_t mostInflated)
    : window_(source), allowance_(window_.size()), objects_(window_, arena_, allowance_),
      parser_(arena_, ObjectParser::Syntax::objects),
      decoder_(window_, *this, allowance_, mostInflated) {}

UnreadReason ObjectStore::open() {
  CrossReferenceReader reader(window_, objects_, decoder_, allowance_, table_);
  const bool isWhole = reader.read();
  headerOffset_ = reader.headerOffset();
  trailer_ = reader.trailer();
  if (!isWhole || trailer_.get("Root").isNull())
    return repair();
  const UnreadReason reason = openEncryption();
  return reason == UnreadReason::none && !get(catalog(), "Pages").isDictionary() ? repair()
                                                                                 : reason;
}

UnreadReason ObjectStore::openEncryption() {
  const Object &stated = trailer_.get("Encrypt");
  if (stated.isNull())
    return UnreadReason::none;
  encryption_.reset();
  table_.forgetObjects();
  const Object dictionary = resolve(stated);
  if (!dictionary.isDictionary())
    return UnreadReason::damaged;
  if (stated.isReference())
    encryptionNumber_ = stated.reference().number;
  const Object identifiers = get(trailer_, "ID");
  const Object identifier =
      identifiers.array().empty() ? Object() : resolve(identifiers.array().front());
  encryption_ = Encryption::create(dictionary.dictionary(), identifier.string(),
                                   [this](const Object &object) { return resolve(object); });
  // Strings were read as they stand in the file.
  table_.forgetObjects();
  return encryption_ == nullptr ? UnreadReason::needsPassword : UnreadReason::none;
}

Object ObjectStore::resolve(const Object &object) {
  constexpr int longest = 32;
  Object found = object;
  for (int i = 0; i < longest && found.isReference(); ++i)
    found = load(found.reference().number);
  return found.isReference() ? Object() : found;
}

Object ObjectStore::load(std::uint32_t number) {
  CrossReference *const entry = table_.find(number);
  if (entry == nullptr || entry->kind == Kind::free || entry->state == State::beingRead)
    return {};
  if (entry->state == State::read)
    return entry->object;
  if (depth_ == deepest)
    return {};
  ++depth_;
  entry->state = State::beingRead;
  auto object = entry->kind == Kind::inFile ? readInFile(number, entry->position)
                                            : readInStream(number, *entry);
  if (!object && !isRepaired_) {
    scan();
    if (const CrossReference *const found = scanned_.find(number))
      object = found->kind == Kind::inFile ? readInFile(number, found->position)
                                           : readInStream(number, *found);
  }
  entry->object = object.value_or(Object());
  entry->state = State::read;
  --depth_;
  return entry->object;
}

std::optional<Object> ObjectStore::readInFile(std::uint32_t number, std::uint64_t position) {
  const Encryption *const encryption = encryptionNumber_ == number ? nullptr : encryption_.get();
  // A scan's offsets count from the beginning of the file.
  const std::array offsets{position + (isRepaired_ ? 0 : headerOffset_), position};
  for (std::size_t i = 0; i < (offsets[0] == offsets[1] ? 1 : 2); ++i) {
    const auto read = objects_.readIndirect(offsets[i], encryption);
    if (read && read->reference.number == number)
      return read->object;
  }
  return std::nullopt;
}

std::optional<Object> ObjectStore::readInStream(std::uint32_t number, const CrossReference &entry) {
  const ObjectStream *const stream = objectStream(entry.position);
  if (stream == nullptr)
    return std::nullopt;
  const auto &heads = stream->heads;
  auto head =
      heads.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(entry.index, heads.size()));
  if (head == heads.end() || head->number != number)
    head = std::find_if(heads.begin(), heads.end(),
                        [&](const auto &candidate) { return candidate.number == number; });
  if (head == heads.end() || head->offset >= stream->bytes.size() || allowance_.isUsedUp())
    return std::nullopt;
  parser_.reset(std::string_view(stream->bytes).substr(static_cast<std::size_t>(head->offset)));
  const Object object = parser_.next();
  if (!allowance_.spend(parser_.position()))
    return std::nullopt;
  return object.kind() == Object::Kind::keyword || object.kind() == Object::Kind::end ? Object()
                                                                                      : object;
}

const ObjectStore::ObjectStream *ObjectStore::objectStream(std::uint64_t number) {
  if (const auto found = objectStreams_.find(number); found != objectStreams_.end())
    return found->second.get();
  CrossReference *const entry = table_.find(number);
  // 7.5.7: an object stream is not in another one.
  if (entry == nullptr || entry->kind != Kind::inFile)
    return nullptr;
  const Object object = load(static_cast<std::uint32_t>(number));
  if (!object.isStream())
    return nullptr;
  auto made = std::make_unique<ObjectStream>();
  made->bytes = decoded(*object.stream(), made->bytes.max_size());
  made->heads = headsOf(object.dictionary(), made->bytes);
  allowance_.add(made->bytes.size());
  streamBytes_ += made->bytes.size();
  while (streamBytes_ > mostStreamBytes && !streamOrder_.empty()) {
    const auto oldest = objectStreams_.find(streamOrder_.front());
    streamBytes_ -= oldest->second->bytes.size();
    objectStreams_.erase(oldest);
    streamOrder_.pop_front();
  }
  streamOrder_.push_back(number);
  return (objectStreams_[number] = std::move(made)).get();
}

std::vector<ObjectStore::ObjectStream::Head> ObjectStore::headsOf(const Dictionary &dictionary,
                                                                  std::string_view bytes) {
  const std::int64_t count = get(dictionary, "N").integer();
  const std::int64_t first = get(dictionary, "First").integer();
  std::vector<ObjectStream::Head> heads;
  parser_.reset(bytes.substr(0, static_cast<std::size_t>(std::max<std::int64_t>(first, 0))));
  for (std::int64_t i = 0; i < count; ++i) {
    const Object number = parser_.next();
    const Object offset = parser_.next();
    if (!number.isInteger() || !offset.isInteger())
      break;
    if (number.integer() >= 0 && number.integer() <= CrossReferenceTable::highest &&
        offset.integer() >= 0)
      heads.push_back({static_cast<std::uint32_t>(number.integer()),
                       static_cast<std::uint64_t>(offset.integer() + first)});
    else
      heads.push_back({UINT32_MAX, bytes.size()});
  }
  return heads;
}

void ObjectStore::scan() {
  if (!scan_) {
    scan_.emplace(window_, allowance_);
    scan_->run(scanned_);
  }
  // Object streams can be read when the encryption is known.
  if (!areStreamsEntered_ && (encryption_ != nullptr || trailer_.get("Encrypt").isNull())) {
    areStreamsEntered_ = true;
    enterObjectStreams(scanned_);
  }
}

UnreadReason ObjectStore::repair() {
  if (isRepaired_)
    return UnreadReason::none;
  isRepaired_ = true;
  if (!scan_) {
    scan_.emplace(window_, allowance_);
    scan_->run(scanned_);
  }
  std::swap(table_, scanned_);
  table_.forgetObjects();
  objectStreams_.clear();
  streamOrder_.clear();
  streamBytes_ = 0;
  takeScannedTrailer();
  if (const UnreadReason reason = openEncryption(); reason != UnreadReason::none)
    return reason;
  if (!areStreamsEntered_) {
    areStreamsEntered_ = true;
    enterObjectStreams(table_);
  }
  return table_.end() == 0 ? UnreadReason::damaged : UnreadReason::none;
}

void ObjectStore::takeScannedTrailer() {
  if (const auto offset = scan_->trailerOffset()) {
    auto read = objects_.readIndirect(*offset, nullptr);
    if (!read)
      read = objects_.readDirect(*offset);
    if (read)
      trailer_ = read->object.dictionary();
  } else if (const auto catalog = scan_->catalog(); catalog && trailer_.get("Root").isNull()) {
    std::vector<DictionaryEntry> entries(trailer_.entries().begin(), trailer_.entries().end());
    entries.push_back({"Root", Object::ofReference(*catalog)});
    std::stable_sort(entries.begin(), entries.end(),
                     [](const auto &a, const auto &b) { return a.key < b.key; });
    trailer_ = Dictionary({arena_.copy(std::span<const DictionaryEntry>(entries)), entries.size()});
  }
}

void ObjectStore::enterObjectStreams(CrossReferenceTable &table) {
  for (const FileScan::ObjectStream &found : scan_->objectStreams()) {
    const CrossReference *const own = table.find(found.number);
    if (own == nullptr || own->kind != Kind::inFile || own->position != found.offset)
      continue;
    const auto read = objects_.readIndirect(found.offset, nullptr);
    if (!read || !read->object.isStream())
      continue;
    const auto first = get(read->object.dictionary(), "First").integer();
    const std::string bytes =
        decoded(*read->object.stream(), static_cast<std::size_t>(std::max<std::int64_t>(first, 0)));
    const auto heads = headsOf(read->object.dictionary(), bytes);
    for (std::size_t i = 0; i < heads.size(); ++i) {
      CrossReference *const entry = table.make(heads[i].number);
      if (entry == nullptr || (entry->kind == Kind::inFile && entry->position > found.offset))
        continue;
      *entry = {};
      entry->kind = Kind::inStream;
      entry->position = found.number;
      entry->index = static_cast<std::uint32_t>(i);
    }
  }
}

} // namespace searchsystem
