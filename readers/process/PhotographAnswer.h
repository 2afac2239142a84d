#pragma once

#include "readers/ReadResult.h"
#include "readers/ReaderProtocol.h"
#include "readers/photographs/PhotographSink.h"

#include <cstddef>
#include <memory>
#include <string_view>

namespace searchsystem {

/// Sends a worker's answers about photographs, one after another. What fits into one record is sent
/// as one.
class PhotographAnswer final : public PhotographSink {
public:
  /// Throws `std::bad_alloc`.
  PhotographAnswer();

  bool takeField(std::string_view name, std::string_view text) override;
  void takeDate(const PhotographDate &date) override;
  void takeCamera(std::string_view maker, std::string_view model) override;

  /// Sends what is left of a photograph's answer, and its end. False when nobody listens any more.
  [[nodiscard]] bool end(UnreadReason reason) noexcept;

private:
  void add(PhotographPart part, std::string_view content) noexcept;
  void send() noexcept;

  bool isWanted_ = true;
  std::size_t size_ = 0;
  /// A record: its kind and the parts.
  const std::unique_ptr<char[]> record_;
};

} // namespace searchsystem
