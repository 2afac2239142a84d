#include "platform/foundation/IconvText.h"

#include <array>
#include <cerrno>
#include <cstddef>

namespace searchsystem {

IconvText::~IconvText() {
  if (isOpen())
    iconv_close(handle_);
}

bool IconvText::isOpen() const noexcept {
  // The C library's own mark of failure.
  return handle_ != reinterpret_cast<iconv_t>(-1); // NOLINT(performance-no-int-to-ptr)
}

std::optional<std::string> IconvText::convert(std::string_view bytes) {
  if (!isOpen())
    return std::nullopt;
  iconv(handle_, nullptr, nullptr, nullptr, nullptr);
  std::string text;
  // iconv does not write to its input, whatever its signature says.
  char *in = const_cast<char *>(bytes.data());
  std::size_t left = bytes.size();
  std::array<char, 1024> buffer;
  // The last round takes what the converter still holds back.
  for (bool isLast = false;; isLast = left == 0) {
    char *out = buffer.data();
    std::size_t room = buffer.size();
    const std::size_t result = isLast ? iconv(handle_, nullptr, nullptr, &out, &room)
                                      : iconv(handle_, &in, &left, &out, &room);
    const bool hasFailed = result == static_cast<std::size_t>(-1);
    const bool isFull = hasFailed && errno == E2BIG;
    if (hasFailed && !isFull)
      return std::nullopt;
    text.append(buffer.data(), buffer.size() - room);
    if (isLast && !isFull)
      return text;
  }
}

} // namespace searchsystem
