#pragma once

#include "readers/documents/Object.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace searchsystem {

/// Where an object is (ISO 32000-2, 7.5.4 and 7.5.8), and the object once it was read.
struct CrossReference {
  enum class Kind : std::uint8_t { unknown, free, inFile, inStream };
  enum class State : std::uint8_t { unread, beingRead, read };

  Kind kind = Kind::unknown;
  State state = State::unread;
  /// In an object stream: the object's place among the others.
  std::uint32_t index = 0;
  /// Offset in the file, or number of the object stream.
  std::uint64_t position = 0;
  Object object;
};

/// Cross-references by object number. Its memory grows with the entries, whatever their numbers
/// are.
class CrossReferenceTable {
public:
  /// The highest number that an object may have (ISO 32000-1, annex C).
  static constexpr std::uint32_t highest = 8388607;

  /// Null if there is none of this number.
  [[nodiscard]] CrossReference *find(std::uint64_t number) noexcept;
  /// The entry of the number, made where it is missing; null for a number that cannot be.
  [[nodiscard]] CrossReference *make(std::uint64_t number);
  void clear() noexcept { groups_.clear(); }
  /// Objects are to be read again.
  void forgetObjects() noexcept;
  /// One more than the highest number that may have an entry.
  [[nodiscard]] std::uint32_t end() const noexcept {
    return static_cast<std::uint32_t>(groups_.size() * groupSize);
  }

private:
  static constexpr std::size_t groupSize = 64;
  using Group = std::array<CrossReference, groupSize>;

  std::vector<std::unique_ptr<Group>> groups_;
};

} // namespace searchsystem
