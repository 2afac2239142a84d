#include "platform/foundation/CodePoints.h"

#include <cstddef>
#include <utf8proc.h>

namespace searchsystem {

void appendCodePoint(std::string &text, std::int32_t codePoint) {
  utf8proc_uint8_t encoded[4];
  const utf8proc_ssize_t length = utf8proc_encode_char(codePoint, encoded);
  text.append(reinterpret_cast<const char *>(encoded), static_cast<std::size_t>(length));
}

std::int32_t takeCodePoint(std::string_view &text) noexcept {
  if (const auto first = static_cast<unsigned char>(text.front()); first < 0x80) {
    text.remove_prefix(1);
    return first;
  }
  utf8proc_int32_t codePoint = -1;
  const utf8proc_ssize_t length =
      utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t *>(text.data()),
                       static_cast<utf8proc_ssize_t>(text.size()), &codePoint);
  text.remove_prefix(length > 0 ? static_cast<std::size_t>(length) : 1);
  return length > 0 ? codePoint : -1;
}

} // namespace searchsystem
