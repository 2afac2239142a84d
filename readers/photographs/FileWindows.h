#pragma once

#include "readers/ByteSource.h"
#include "readers/photographs/ReadBudget.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace searchsystem {

/// The bytes of a photograph, of which only those parts are read that are asked for. Some windows
/// of the file are kept, since directories and their values lie apart. Or bytes in memory.
///
/// Not thread-safe. The source or the memory, and the budget, must outlive it.
class FileWindows {
public:
  /// The most that `at` and `peek` give.
  static constexpr std::size_t longestView = 4096;

  FileWindows(ByteSource &source, ReadBudget &budget);
  FileWindows(std::string_view memory, ReadBudget &budget);

  [[nodiscard]] std::uint64_t size() const noexcept { return size_; }
  /// The bytes from `offset` on; none where the file has fewer, or where the budget is spent.
  /// Valid until the next call.
  [[nodiscard]] std::string_view at(std::uint64_t offset, std::size_t count);
  /// The same, where what follows will not be asked for: no more is read than these.
  [[nodiscard]] std::string_view peek(std::uint64_t offset, std::size_t count);
  /// Up to `count` bytes, of any number: fewer at the end of the file, none where the budget is
  /// spent.
  [[nodiscard]] std::string read(std::uint64_t offset, std::size_t count);

  [[nodiscard]] ReadBudget &budget() const noexcept { return budget_; }

private:
  static constexpr std::size_t windowSize = 8192;
  /// Of a window, in front of what was asked for: values often stand before their directory.
  static constexpr std::uint64_t lead = 1024;

  struct Window {
    std::unique_ptr<char[]> bytes;
    std::uint64_t offset = 0;
    std::size_t size = 0;
    std::uint64_t lastUse = 0;
  };

  [[nodiscard]] const Window *windowWith(std::uint64_t offset, std::size_t count) noexcept;
  /// Reads into the window that was not used for longest.
  [[nodiscard]] const Window *load(std::uint64_t offset, std::size_t count);

  ByteSource *source_;
  std::string_view memory_;
  ReadBudget &budget_;
  std::uint64_t size_;
  std::array<Window, 4> windows_;
  std::uint64_t uses_ = 0;
};

} // namespace searchsystem
