#pragma once

#include <atomic>
#include <cstdint>
#include <thread>

namespace searchsystem {

/// Kills reader processes of this process at random times while it lives, starters and workers. The
/// process must adopt what its descendants leave behind.
class ReaderKiller {
public:
  explicit ReaderKiller(std::uint64_t seed);
  ~ReaderKiller();
  ReaderKiller(const ReaderKiller &) = delete;
  ReaderKiller &operator=(const ReaderKiller &) = delete;

private:
  std::atomic<bool> isOver_{false};
  std::thread thread_;
};

} // namespace searchsystem
