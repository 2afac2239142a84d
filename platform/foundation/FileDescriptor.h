#pragma once

#include <unistd.h>
#include <utility>

namespace searchsystem {

/// Owns an open descriptor, or none. Threads: one at a time.
class FileDescriptor {
public:
  FileDescriptor() noexcept = default;
  /// Takes over `number`; below 0 is none.
  explicit FileDescriptor(int number) noexcept : number_(number) {}
  FileDescriptor(FileDescriptor &&other) noexcept : number_(std::exchange(other.number_, -1)) {}
  FileDescriptor &operator=(FileDescriptor &&other) noexcept {
    if (this != &other) {
      close();
      number_ = std::exchange(other.number_, -1);
    }
    return *this;
  }
  ~FileDescriptor() { close(); }

  [[nodiscard]] int number() const noexcept { return number_; }
  explicit operator bool() const noexcept { return number_ >= 0; }

  void close() noexcept {
    if (number_ >= 0)
      ::close(std::exchange(number_, -1));
  }

private:
  int number_ = -1;
};

} // namespace searchsystem
