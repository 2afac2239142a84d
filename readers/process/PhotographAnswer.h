#pragma once

#include "readers/ReadResult.h"
#include "readers/ReaderProtocol.h"
#include "readers/photographs/PhotographSink.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <string_view>

namespace searchsystem {

/// Sends a worker's answers about photographs, one after another. What fits into one record is sent
/// as one; for that, answers may wait for each other, but no longer than a few photographs take.
class PhotographAnswer final : public PhotographSink {
public:
  /// Throws `std::bad_alloc`.
  PhotographAnswer();

  bool takeField(std::string_view name, std::string_view text) override;
  void takeDate(const PhotographDate &date) override;
  void takeCamera(std::string_view maker, std::string_view model) override;

  /// Ends a photograph's answer, and sends it unless it may wait for the next one. False when
  /// nobody listens any more.
  [[nodiscard]] bool end(UnreadReason reason, bool mayWait) noexcept;

  /// Whether something waits to be sent.
  [[nodiscard]] bool waits() const noexcept { return size_ != 0; }
  void send() noexcept;

private:
  using Clock = std::chrono::steady_clock;

  void add(PhotographPart part, std::string_view content) noexcept;

  bool isWanted_ = true;
  /// Since when something waits.
  Clock::time_point waitsSince_;
  std::size_t size_ = 0;
  /// A record: its kind and the parts.
  const std::unique_ptr<char[]> record_;
};

} // namespace searchsystem
