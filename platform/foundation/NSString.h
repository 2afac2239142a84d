#pragma once

#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSRange.h"
#include "platform/foundation/Ref.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace searchsystem {

/// Encodings of data, by their Foundation numbers.
enum NSStringEncoding : std::uint32_t {
  /// The default C-string encoding: UTF-8, and ISO Latin-1 for bytes that are not valid UTF-8.
  NSDefaultCStringEncoding = 0,
  NSASCIIStringEncoding = 1,
  NSUTF8StringEncoding = 4,
  /// UTF-16, in the order of its byte-order mark, or big-endian without one. The mark is not part
  /// of the text.
  NSUnicodeStringEncoding = 10,
  NSISO2022JPStringEncoding = 21,
};

/// The order of two values.
enum NSComparisonResult : int {
  NSOrderedAscending = -1,
  NSOrderedSame = 0,
  NSOrderedDescending = 1,
};

/// An immutable text. It keeps its original bytes: those that are not UTF-8, as in some file names,
/// stay unchanged and match themselves in a search.
///
/// Ownership: counted; the text lives inside the object.
/// Threads: any; immutable.
class NSString final : public NSObject {
public:
  /// A string of the given bytes. Throws `std::bad_alloc`, also for more than 4 GiB - 1. Only a
  /// string without a NUL may name a file or be given to C.
  static Ref<const NSString> create(std::string_view bytes);

  /// A string of data in an encoding, NULs included; null if they are invalid in it. Throws as
  /// `create` does.
  static Ref<const NSString> initWithData(std::string_view data, NSStringEncoding encoding);

  /// The concatenation of three texts, in one allocation. Throws as `create` does.
  static Ref<const NSString> join(std::string_view a, std::string_view b, std::string_view c);

  /// The bytes, ended by a NUL. Valid as long as the object.
  [[nodiscard]] const char *UTF8String() const noexcept;

  /// The bytes without the NUL.
  [[nodiscard]] std::string_view view() const noexcept { return {UTF8String(), length_}; }

  /// The length in bytes.
  [[nodiscard]] std::size_t length() const noexcept { return length_; }

  [[nodiscard]] bool isEqualToString(const NSString &other) const noexcept {
    return view() == other.view();
  }

  /// Where `text` first occurs, by the rules of `TextPattern`; length 0 if it does not occur or is
  /// empty. Throws `std::bad_alloc`.
  [[nodiscard]] NSRange rangeOfString(const NSString &text, unsigned options) const;

  /// This path, a slash unless it ends with one, and `name`. An empty path gives the name alone.
  /// Throws as `create` does.
  [[nodiscard]] Ref<const NSString> stringByAppendingPathComponent(std::string_view name) const;

  static void operator delete(void *memory) noexcept;

private:
  explicit NSString(std::size_t length) noexcept : length_(static_cast<std::uint32_t>(length)) {}
  ~NSString() override = default;

  static NSString *allocate(std::size_t length);
  char *bytes() noexcept;

  const std::uint32_t length_;
};

} // namespace searchsystem
