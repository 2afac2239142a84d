#pragma once

#include "readers/ReaderProtocol.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace searchsystem {

/// A file that was lent to a worker.
struct LentFile {
  int descriptor = -1;
  std::uint64_t size = 0;
};

/// Photographs that a worker is to read, with the descriptors that came with them.
///
/// Ownership: closes its descriptors. Threads: one at a time.
class ReceivedPhotographs {
public:
  ReceivedPhotographs() noexcept = default;
  ~ReceivedPhotographs();
  ReceivedPhotographs(const ReceivedPhotographs &) = delete;
  ReceivedPhotographs &operator=(const ReceivedPhotographs &) = delete;

  /// Waits for the next photographs. False when none will come, or what has come is not whole. To
  /// be called once.
  [[nodiscard]] bool receive(int socket) noexcept;

  [[nodiscard]] std::size_t count() const noexcept { return batch_.count; }
  [[nodiscard]] bool mayAnswerTogether() const noexcept { return batch_.mayAnswerTogether != 0; }

  /// Hands on the next photograph, and its sidecar, whose descriptor is -1 if there is none. They
  /// stay this object's until the next call.
  struct Next {
    LentFile photograph, sidecar;
  };
  [[nodiscard]] Next next() noexcept;

private:
  static constexpr std::size_t mostFiles = 2 * PhotographBatch::mostPhotographs;

  [[nodiscard]] bool isWhole() const noexcept;
  [[nodiscard]] LentFile nextFile() noexcept;
  void closeUsed() noexcept;

  PhotographBatch batch_;
  std::array<int, mostFiles> descriptors_{};
  std::size_t descriptorCount_ = 0;
  std::size_t photographsUsed_ = 0;
  std::size_t used_ = 0, closed_ = 0;
};

} // namespace searchsystem
