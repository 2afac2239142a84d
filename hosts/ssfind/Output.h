#pragma once

#include <cstddef>
#include <string>

namespace ssfind {

/// What is on its way to a descriptor. After a failure nothing more is written.
class Output {
public:
  explicit Output(int descriptor);

  /// Where to append. isFull tells when it is time to flush.
  [[nodiscard]] std::string &text() noexcept { return text_; }
  [[nodiscard]] bool isEmpty() const noexcept { return text_.empty(); }
  [[nodiscard]] bool isFull() const noexcept { return text_.size() >= capacity; }

  /// Hands over all that waits, and waits itself until it is taken.
  void flush() noexcept;

  /// Looks whether a pipe's reader has gone, which otherwise shows with the next flush only.
  void checkReader() noexcept;

  /// The number of the system's error, and 0 while there is none. A closed pipe is EPIPE.
  [[nodiscard]] int error() const noexcept { return error_; }

private:
  static constexpr std::size_t capacity = std::size_t{1} << 16;

  const int descriptor_;
  std::string text_;
  int error_ = 0;
};

} // namespace ssfind
