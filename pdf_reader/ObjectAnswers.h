#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// What is known of the text that is read from an object on. Only `unknown` may stand for an object
/// whose text holds the keyword.
enum class ObjectAnswer : std::uint8_t {
  unknown,
  /// Converted in the encoding that was asked for; the keyword does not occur.
  absent,
  /// Converted only in the encoding that comes second; the keyword does not occur.
  absentInOther,
  /// Not converted.
  unreadable,
};

/// The answers for the objects of a file by their positions, and which of them a parse has come to.
///
/// Threads: one at a time.
class ObjectAnswers {
public:
  explicit ObjectAnswers(long fileSize) noexcept
      : fileSize_(fileSize > 0 ? static_cast<std::size_t>(fileSize) : 0) {}

  [[nodiscard]] ObjectAnswer at(long position) const noexcept {
    const auto place = static_cast<std::size_t>(position);
    if (place >= fileSize_ || answers_.empty())
      return ObjectAnswer::unknown;
    return static_cast<ObjectAnswer>(answers_[place / perByte] >> shiftOf(place) & mask);
  }

  /// Notes an answer that was unknown. Throws `std::bad_alloc`.
  void set(long position, ObjectAnswer answer) { add(position, static_cast<unsigned>(answer)); }

  /// Notes that a parse has come to an object. Throws `std::bad_alloc`.
  void meet(long position) { add(position, metBit); }

  [[nodiscard]] bool isMet(long position) const noexcept {
    const auto place = static_cast<std::size_t>(position);
    return place < fileSize_ && !answers_.empty() &&
           (answers_[place / perByte] >> shiftOf(place) & metBit) != 0;
  }

private:
  static constexpr std::size_t perByte = 2;
  static constexpr unsigned mask = 3;
  static constexpr unsigned metBit = 4;
  static unsigned shiftOf(std::size_t place) noexcept {
    return static_cast<unsigned>(place % perByte) * 4;
  }

  void add(long position, unsigned bits) {
    const auto place = static_cast<std::size_t>(position);
    if (place >= fileSize_)
      return;
    if (answers_.empty())
      answers_.resize(fileSize_ / perByte + 1);
    answers_[place / perByte] |= static_cast<std::uint8_t>(bits << shiftOf(place));
  }

  std::size_t fileSize_;
  std::vector<std::uint8_t> answers_;
};
