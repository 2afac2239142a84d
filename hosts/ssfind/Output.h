#pragma once

#include <cstddef>
#include <string>

namespace searchsystem::ssfind {

/// Buffered output to a descriptor. After a failure nothing more is written.
class Output {
public:
  explicit Output(int descriptor);

  /// The buffer to append to. Flush when isFull() is true.
  [[nodiscard]] std::string &text() noexcept { return text_; }
  [[nodiscard]] bool isEmpty() const noexcept { return text_.empty(); }
  [[nodiscard]] bool isFull() const noexcept { return text_.size() >= capacity; }

  /// Writes the buffer, and waits until all of it is written.
  void flush() noexcept;

  /// Checks whether a pipe's reader is gone, which otherwise only the next flush shows.
  void checkReader() noexcept;

  /// The system's error number, 0 if there is none. A closed pipe is EPIPE.
  [[nodiscard]] int error() const noexcept { return error_; }

private:
  static constexpr std::size_t capacity = std::size_t{1} << 16;

  const int descriptor_;
  std::string text_;
  int error_ = 0;
};

} // namespace searchsystem::ssfind
