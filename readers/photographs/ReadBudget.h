#pragma once

#include <cstddef>
#include <cstdint>

namespace searchsystem {

/// What the reading of one photograph may still cost, whatever the file says about itself. A budget
/// that is spent stays so: then nothing more is given out, and every loop over the file ends.
class ReadBudget {
public:
  /// Of bytes that are read, taken as values or inflated. A packet of descriptions may be as long
  /// as `longestPacket`, a text as `longestText`; of longer ones the beginning is read.
  static constexpr std::uint64_t mostBytes = std::uint64_t{24} << 20;
  static constexpr std::size_t longestPacket = std::size_t{8} << 20;
  static constexpr std::size_t longestText = std::size_t{256} << 10;
  static constexpr std::uint32_t mostReads = 200'000;
  /// Of entries, and packets of XMP.
  static constexpr std::uint32_t mostDirectories = 4096;
  static constexpr std::uint32_t mostEntries = 65536;
  /// Of blocks that lie in blocks.
  static constexpr int mostNesting = 6;

  [[nodiscard]] bool spendBytes(std::uint64_t count) noexcept { return spend(bytes_, count); }
  [[nodiscard]] bool spendRead() noexcept { return spend(reads_, 1U); }
  [[nodiscard]] bool spendDirectory() noexcept { return spend(directories_, 1U); }
  [[nodiscard]] bool spendEntry() noexcept { return spend(entries_, 1U); }

  [[nodiscard]] bool isSpent() const noexcept { return isSpent_; }
  /// Ends the reading: it was too much, or nobody wants more.
  void end() noexcept { isSpent_ = true; }

private:
  template <class Number> [[nodiscard]] bool spend(Number &left, Number count) noexcept {
    if (isSpent_ || count > left) {
      isSpent_ = true;
      return false;
    }
    left -= count;
    return true;
  }

  std::uint64_t bytes_ = mostBytes;
  std::uint32_t reads_ = mostReads;
  std::uint32_t directories_ = mostDirectories;
  std::uint32_t entries_ = mostEntries;
  bool isSpent_ = false;
};

} // namespace searchsystem
