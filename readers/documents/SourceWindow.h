#pragma once

#include "readers/ByteSource.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace searchsystem {

/// Views of a file's bytes. A small file is read at once; of another one only the parts that are
/// asked for, of which some are kept.
class SourceWindow {
public:
  explicit SourceWindow(ByteSource &source);

  [[nodiscard]] std::uint64_t size() const noexcept { return size_; }
  /// The bytes from `offset` on, at least `count` of them where the file has them. Valid until the
  /// next call.
  [[nodiscard]] std::string_view at(std::uint64_t offset, std::size_t count);
  /// Whether views stay valid.
  [[nodiscard]] bool isWhole() const noexcept { return whole_ != nullptr; }
  /// Reads beside the windows.
  [[nodiscard]] std::size_t read(std::uint64_t offset, char *room, std::size_t count) noexcept;

private:
  static constexpr std::uint64_t readAtOnce = std::uint64_t{1} << 20;
  static constexpr std::size_t windowSize = 32768;

  struct Window {
    std::unique_ptr<char[]> bytes;
    std::size_t room = 0;
    std::uint64_t offset = 0;
    std::size_t size = 0;
    std::uint64_t lastUse = 0;
  };

  ByteSource &source_;
  std::uint64_t size_;
  std::unique_ptr<char[]> whole_;
  std::array<Window, 8> windows_;
  std::uint64_t uses_ = 0;
};

} // namespace searchsystem
