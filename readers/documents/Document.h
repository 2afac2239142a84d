#pragma once

#include "readers/ByteSource.h"
#include "readers/ReadResult.h"
#include "readers/documents/Object.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

namespace searchsystem {

/// A page, with what it inherits (ISO 32000-2, 7.7.3.4).
struct Page {
  Dictionary dictionary;
  Dictionary resources;
  /// The media box, resolved: four numbers, or null.
  Object mediaBox;
  /// Clockwise: 0, 90, 180 or 270 degrees.
  int rotation = 0;
};

/// The objects of one PDF document (ISO 32000-2), read as they are asked for. A damaged document
/// gives what can be found in it. All objects stay valid as long as the document; it is not
/// thread-safe, but may be called again from inside `take` and `visit`. Throws nothing but
/// `std::bad_alloc`.
class Document {
public:
  /// How much may come out of the filters of all streams together.
  static constexpr std::uint64_t mostInflated = std::uint64_t{256} << 20;

  /// `source` has to outlive the document. Otherwise the reason: `needsPassword`, also for
  /// encryption by other means than a password, or `damaged`.
  [[nodiscard]] static std::variant<std::unique_ptr<Document>, UnreadReason>
  open(ByteSource &source);

  Document(const Document &) = delete;
  Document &operator=(const Document &) = delete;
  ~Document();

  /// What a reference leads to, in the end; null for what is not there. Other objects are
  /// themselves.
  [[nodiscard]] Object resolve(const Object &object);
  [[nodiscard]] Object get(const Dictionary &dictionary, std::string_view key) {
    return resolve(dictionary.get(key));
  }

  /// Hands the decoded data over in pieces, while they are decoded; of a broken stream what is
  /// there. Images (DCT, JPX, CCITT, JBIG2) give nothing. False when `take` answered false or the
  /// limit was met.
  bool decode(const Stream &stream, const std::function<bool(std::string_view)> &take);
  /// The first `most` bytes of them at once.
  [[nodiscard]] std::string decoded(const Stream &stream, std::size_t most);

  /// Pages in their order, each once. Stops when `visit` answers false.
  void forEachPage(const std::function<bool(const Page &)> &visit);

  [[nodiscard]] Dictionary catalog();
  [[nodiscard]] Dictionary trailer();
  [[nodiscard]] bool isEncrypted() const noexcept;
  /// The limit of what may be inflated was met: the document counts as too large.
  [[nodiscard]] bool hasMetLimit() const noexcept;

private:
  class Parts;
  explicit Document(std::unique_ptr<Parts> parts) noexcept;
  std::unique_ptr<Parts> parts_;
};

} // namespace searchsystem
