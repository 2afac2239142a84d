#include "readers/documents/Document.h"

#include "readers/documents/ObjectStore.h"
#include "readers/documents/PageTree.h"

namespace searchsystem {

class Document::Parts {
public:
  explicit Parts(ByteSource &source) : store(source, mostInflated) {}
  ObjectStore store;
};

Document::Document(std::unique_ptr<Parts> parts) noexcept : parts_(std::move(parts)) {}

Document::~Document() = default;

std::variant<std::unique_ptr<Document>, UnreadReason> Document::open(ByteSource &source) {
  auto parts = std::make_unique<Parts>(source);
  const UnreadReason reason = parts->store.open();
  if (parts->store.hasMetLimit())
    return UnreadReason::tooLarge;
  if (reason != UnreadReason::none)
    return reason;
  return std::unique_ptr<Document>(new Document(std::move(parts)));
}

Object Document::resolve(const Object &object) { return parts_->store.resolve(object); }

bool Document::decode(const Stream &stream, const std::function<bool(std::string_view)> &take) {
  return parts_->store.decode(stream, take);
}

std::string Document::decoded(const Stream &stream, std::size_t most) {
  return parts_->store.decoded(stream, most);
}

void Document::forEachPage(const std::function<bool(const Page &)> &visit) {
  PageTree(parts_->store).forEachPage(visit);
}

Dictionary Document::catalog() { return parts_->store.catalog(); }

Dictionary Document::trailer() { return parts_->store.trailer(); }

bool Document::isEncrypted() const noexcept { return parts_->store.isEncrypted(); }

bool Document::hasMetLimit() const noexcept { return parts_->store.hasMetLimit(); }

} // namespace searchsystem
