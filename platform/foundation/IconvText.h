#pragma once

#include <iconv.h>
#include <optional>
#include <string>
#include <string_view>

namespace searchsystem {

/// A conversion of the C library between two encodings, by its names for them.
///
/// Threads: one at a time.
class IconvText {
public:
  /// With an unknown encoding, or if a resource is missing, `convert` returns none.
  IconvText(const char *to, const char *from) noexcept : handle_(iconv_open(to, from)) {}
  ~IconvText();
  IconvText(const IconvText &) = delete;
  IconvText &operator=(const IconvText &) = delete;

  [[nodiscard]] bool isOpen() const noexcept;

  /// All of `bytes` converted, from initial state to initial state; none if they are invalid or end
  /// within a character. Throws `std::bad_alloc`.
  [[nodiscard]] std::optional<std::string> convert(std::string_view bytes);

private:
  iconv_t handle_;
};

} // namespace searchsystem
