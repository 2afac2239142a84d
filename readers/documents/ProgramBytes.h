#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace searchsystem {

/// The bytes of a font program, whose numbers have their high byte first. What lies outside of them
/// reads as 0, or as nothing.
class ProgramBytes {
public:
  ProgramBytes() = default;
  explicit ProgramBytes(std::string_view bytes) noexcept : bytes_(bytes) {}

  [[nodiscard]] std::size_t size() const noexcept { return bytes_.size(); }
  [[nodiscard]] std::uint32_t byte(std::size_t at) const noexcept { return number(at, 1); }
  [[nodiscard]] std::uint32_t word(std::size_t at) const noexcept { return number(at, 2); }
  [[nodiscard]] std::uint32_t longWord(std::size_t at) const noexcept { return number(at, 4); }
  /// A number of up to four bytes.
  [[nodiscard]] std::uint32_t number(std::size_t at, std::size_t length) const noexcept {
    if (at > bytes_.size() || length > bytes_.size() - at)
      return 0;
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < length; ++i)
      value = value << 8 | static_cast<unsigned char>(bytes_[at + i]);
    return value;
  }
  [[nodiscard]] std::string_view part(std::size_t at, std::size_t length) const noexcept {
    return at > bytes_.size() ? std::string_view() : bytes_.substr(at, length);
  }

private:
  std::string_view bytes_;
};

} // namespace searchsystem
