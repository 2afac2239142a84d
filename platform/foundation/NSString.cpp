#include "platform/foundation/NSString.h"

#include "platform/foundation/PathComponents.h"
#include "platform/foundation/StringEncoding.h"
#include "platform/foundation/TextPattern.h"

#include <algorithm>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <utility>

namespace searchsystem {

// The text follows the object in the same allocation, so that a path costs little more than its
// bytes.

NSString *NSString::allocate(std::size_t length) {
  if (length >= std::numeric_limits<std::uint32_t>::max())
    throw std::bad_alloc();
  void *memory = ::operator new(sizeof(NSString) + length + 1);
  auto *string = ::new (memory) NSString(length);
  string->bytes()[length] = '\0';
  return string;
}

void NSString::operator delete(void *memory) noexcept { ::operator delete(memory); }

char *NSString::bytes() noexcept { return reinterpret_cast<char *>(this + 1); }

const char *NSString::UTF8String() const noexcept {
  return reinterpret_cast<const char *>(this + 1);
}

Ref<const NSString> NSString::create(std::string_view bytes) { return join(bytes, {}, {}); }

Ref<const NSString> NSString::initWithData(std::string_view data, NSStringEncoding encoding) {
  using enum StringEncoding;
  static constexpr std::pair<NSStringEncoding, StringEncoding> known[] = {
      {NSDefaultCStringEncoding, UTF8}, {NSDefaultCStringEncoding, ISOLatin1},
      {NSASCIIStringEncoding, ASCII},   {NSUTF8StringEncoding, UTF8},
      {NSUnicodeStringEncoding, UTF16}, {NSISO2022JPStringEncoding, ISO2022JP}};
  for (const auto &[number, form] : known)
    if (number == encoding)
      if (const std::optional<std::string> text = decodeText(data, form))
        return create(*text);
  return nullptr;
}

Ref<const NSString> NSString::join(std::string_view a, std::string_view b, std::string_view c) {
  NSString *string = allocate(a.size() + b.size() + c.size());
  char *end = std::copy(a.begin(), a.end(), string->bytes());
  end = std::copy(b.begin(), b.end(), end);
  std::copy(c.begin(), c.end(), end);
  return Ref<const NSString>::adopt(string);
}

NSRange NSString::rangeOfString(const NSString &text, unsigned options) const {
  return TextPattern(text.view(), options).find(view());
}

Ref<const NSString> NSString::stringByAppendingPathComponent(std::string_view name) const {
  if (length_ == 0)
    return create(name);
  return join(pathWithoutTrailingSlashes(view()), "/", name);
}

} // namespace searchsystem
