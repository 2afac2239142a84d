// Opens any bytes as a document and reads whatever pages, catalog and trailer lead to.

#include "readers/ByteSource.h"
#include "readers/documents/Document.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <set>
#include <string_view>
#include <variant>

namespace {

using namespace searchsystem;

constexpr int deepest = 200;
constexpr int mostObjects = 3000;

class Visitor {
public:
  explicit Visitor(Document &document) : document_(document) {}

  void visit(const Object &object, int depth = 0) {
    if (++count_ > mostObjects || depth > deepest)
      return;
    if (object.isReference() && !met_.insert(object.reference().number).second)
      return;
    const Object found = document_.resolve(object);
    if (found.isReference())
      std::abort();
    for (const Object &item : found.array())
      visit(item, depth + 1);
    for (const DictionaryEntry &entry : found.dictionary().entries())
      visit(entry.value, depth + 1);
    if (const Stream *const stream = found.stream())
      static_cast<void>(document_.decoded(*stream, 1 << 20));
  }

private:
  Document &document_;
  std::set<std::uint32_t> met_;
  int count_ = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  MemorySource source({reinterpret_cast<const char *>(data), size});
  const auto opened = Document::open(source);
  if (std::holds_alternative<UnreadReason>(opened))
    return 0;
  Document &document = *std::get<0>(opened);
  Visitor visitor(document);
  int pages = 0;
  document.forEachPage([&](const Page &page) {
    visitor.visit(Object::ofDictionary(page.dictionary));
    visitor.visit(Object::ofDictionary(page.resources));
    return ++pages < 1000;
  });
  visitor.visit(Object::ofDictionary(document.trailer()));
  return 0;
}
